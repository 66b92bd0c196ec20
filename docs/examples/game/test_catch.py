#!/usr/bin/env python3
"""Plays the game by kiv-run --json and looks at what comes of it. Needs nothing but Python.

    test_catch.py [KIV_RUN [FOLDER_OF_ROM_IMAGES]]
"""
import base64
import json
import re
import subprocess
import sys
import unittest

KIV_RUN = sys.argv[1] if len(sys.argv) > 1 else "kiv-run"
ROMS = sys.argv[2] if len(sys.argv) > 2 else "/usr/share/kiv/roms"
CPU = 0  # KIV_AREA_CPU
KEY_4, KEY_6 = 4, 6  # bits of row 0
REG_PC = 10


class Machine:
    """A machine of its own in a process of its own."""

    def __init__(self):
        command = [KIV_RUN, "--roms", ROMS, "--json", "--symbols", "catch.sym", "--seed", "1"]
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=subprocess.DEVNULL, text=True)

    def ask(self, request):
        self.process.stdin.write(json.dumps(request) + "\n")
        self.process.stdin.flush()
        answer = json.loads(self.process.stdout.readline())
        if "error" in answer:
            raise RuntimeError(answer["error"])
        return answer

    def __getattr__(self, name):
        return lambda *args: self.ask({"call": "kiv_" + name, "args": list(args)})["result"]

    def console(self, line):
        return "\n".join(self.ask({"console": line})["output"])

    def close(self):
        self.process.stdin.close()
        self.process.wait()
        self.process.stdout.close()


class Catch(unittest.TestCase):
    def setUp(self):
        with open("catch.sym") as file:
            self.symbols = {name: int(value, 16) for name, value in
                            re.findall(r"^(\w+)\s+EQU\s+0?([0-9A-F]+)H", file.read(), re.M)}
        with open("catch.bin", "rb") as file:
            game = file.read()
        self.machine = Machine()
        self.addCleanup(self.machine.close)
        for _ in range(70):
            self.machine.run_frame()
        self.machine.write(CPU, 0x9000, base64.b64encode(game).decode())
        self.machine.set_register(REG_PC, self.symbols["start"])

    def byte(self, name):
        return self.machine.peek(CPU, self.symbols[name])

    def hold(self, key):
        """Holds one of the two keys, or none."""
        for bit in (KEY_4, KEY_6):
            self.machine.matrix_key(0, bit, int(bit == key))

    def test_following_the_stars_wins(self):
        for _ in range(600):
            dish, star = self.byte("dish"), self.byte("star")
            self.hold(KEY_4 if dish > star else KEY_6 if dish < star else None)
            self.machine.run_frame()
            if "YOU WIN" in self.machine.text_screen():
                break
        self.assertIn("YOU WIN", self.machine.text_screen())
        self.assertEqual(self.byte("score"), 5)

    def test_doing_nothing_loses(self):
        for _ in range(120):
            self.machine.run_frame()
        self.assertIn("GAME OVER", self.machine.text_screen())
        self.assertEqual(self.byte("score"), 0)

    def test_the_dish_stays_on_the_screen(self):
        self.machine.poke(CPU, self.symbols["star"], 200)  # out of the way
        for key, column in ((KEY_4, 0), (KEY_6, 79)):
            self.hold(key)
            self.machine.poke(CPU, self.symbols["row"], 0)
            for _ in range(60):
                self.machine.poke(CPU, self.symbols["row"], 0)
                self.machine.run_frame()
            if key == KEY_6:
                for _ in range(60):
                    self.machine.poke(CPU, self.symbols["row"], 0)
                    self.machine.run_frame()
            self.assertEqual(self.byte("dish"), column)

    def test_the_debugger_answers_too(self):
        self.machine.console("break lost")
        self.assertIn("lost:", self.machine.console("go"))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
