#!/usr/bin/env python3
"""How long a key takes to the screen, and how evenly frames come, in the real window on an X server.

    xvfb-run -s '-screen 0 1280x1024x24' bench/key_to_pixel.py build/release/app/kiv [presses, default 200]

Three ROMs of a few bytes: one looks at a key all the time and turns the whole screen white while it is down; one looks
once a vertical retrace and answers at the next, as games do; one turns the screen over at every retrace. The screen's
middle pixel is asked for as fast as the server answers. Needs openbox, libX11 and libXtst.
"""
import ctypes
import os
import random
import statistics
import subprocess
import sys
import tempfile
import time

POLLING = bytes.fromhex("F33E08D331" "DB02E6023E072801AFD35418F3")
RETRACE = bytes.fromhex("F33E08D331" "DB40E62028FA" "78D354" "DB02E60206072802" "0600" "DB40E62020FA" "18E5")
FLIP = bytes.fromhex("F33E08D331" "DB40E62028FA" "78EE0747D354" "DB40E62020FA" "18EC")

x11, xtst = ctypes.CDLL("libX11.so.6"), ctypes.CDLL("libXtst.so.6")
x11.XOpenDisplay.restype = x11.XGetImage.restype = ctypes.c_void_p
x11.XDefaultRootWindow.restype = x11.XGetPixel.restype = ctypes.c_ulong
x11.XDefaultRootWindow.argtypes = x11.XDefaultScreen.argtypes = x11.XFlush.argtypes = [ctypes.c_void_p]
x11.XDisplayWidth.argtypes = x11.XDisplayHeight.argtypes = [ctypes.c_void_p, ctypes.c_int]
x11.XGetImage.argtypes = [ctypes.c_void_p, ctypes.c_ulong] + [ctypes.c_int] * 2 + [ctypes.c_uint] * 2 + [
    ctypes.c_ulong, ctypes.c_int]
x11.XGetPixel.argtypes = [ctypes.c_void_p, ctypes.c_int, ctypes.c_int]
x11.XDestroyImage.argtypes = [ctypes.c_void_p]
x11.XKeysymToKeycode.argtypes = [ctypes.c_void_p, ctypes.c_ulong]
xtst.XTestFakeKeyEvent.argtypes = [ctypes.c_void_p, ctypes.c_uint, ctypes.c_int, ctypes.c_ulong]


class Screen:
    def __init__(self):
        self.display = x11.XOpenDisplay(None)
        if not self.display:
            sys.exit("no X server")
        self.root = x11.XDefaultRootWindow(self.display)
        self.x = x11.XDisplayWidth(self.display, 0) // 2
        self.y = x11.XDisplayHeight(self.display, 0) // 2
        self.key_code = x11.XKeysymToKeycode(self.display, ord("a"))

    def white(self):
        image = x11.XGetImage(self.display, self.root, self.x, self.y, 1, 1, 0xFFFFFF, 2)
        pixel = x11.XGetPixel(image, 0, 0)
        x11.XDestroyImage(image)
        return pixel & 0xFFFFFF == 0xFFFFFF

    def key(self, down):
        xtst.XTestFakeKeyEvent(self.display, self.key_code, down, 0)
        x11.XFlush(self.display)

    def wait(self, white, seconds=5):
        end = time.perf_counter() + seconds
        while self.white() != white:
            if time.perf_counter() > end:
                sys.exit("the screen does not change")
        return time.perf_counter()


def latencies(screen, presses):
    found = []
    for _ in range(presses):
        time.sleep(0.1 + random.random() * 0.05)
        begun = time.perf_counter()
        screen.key(1)
        found.append((screen.wait(True) - begun) * 1000)
        time.sleep(0.06)
        screen.key(0)
        screen.wait(False)
    return found


def intervals(screen, frames):
    white, last, found = screen.white(), None, []
    while len(found) < frames:
        white = not white
        now = screen.wait(white)
        if last is not None:
            found.append((now - last) * 1000)
        last = now
    return found


def run(kiv, rom, ahead, measure):
    with tempfile.TemporaryDirectory() as folder:
        for name, data in (("8801-zun.rom", rom), ("8801-kiv.rom", b"\0"), ("8801-4th.rom", b"\0" * 8192)):
            with open(os.path.join(folder, name), "wb") as f:
                f.write(data)
        os.makedirs(os.path.join(folder, "config/kiv"))
        with open(os.path.join(folder, "config/kiv/kiv.ini"), "w") as f:
            f.write(f"[Kiv]\nrun_ahead={ahead}\n")
        places = {"XDG_CONFIG_HOME": "config", "XDG_DATA_HOME": "data", "XDG_RUNTIME_DIR": "run"}
        environment = dict(os.environ, **{k: os.path.join(folder, v) for k, v in places.items()})
        os.makedirs(environment["XDG_RUNTIME_DIR"], 0o700)
        with subprocess.Popen([kiv], cwd=folder, env=environment) as program:
            time.sleep(4)
            try:
                return measure()
            finally:
                program.terminate()


def main():
    kiv, presses = os.path.abspath(sys.argv[1]), int(sys.argv[2]) if len(sys.argv) > 2 else 200
    with subprocess.Popen(["openbox"], stderr=subprocess.DEVNULL) as manager:
        time.sleep(1)
        screen = Screen()
        for name, rom in (("polling", POLLING), ("once a retrace", RETRACE)):
            for ahead in (0, 1, 2):
                ms = run(kiv, rom, ahead, lambda: latencies(screen, presses))
                print(f"{name}, {ahead} ahead: median {statistics.median(ms):.1f} ms, worst {max(ms):.1f} ms", flush=True)
        ms = sorted(run(kiv, FLIP, 0, lambda: intervals(screen, 10 * presses)))
        print(f"frames: {1000 / statistics.mean(ms):.2f} a second, 99th percentile {ms[len(ms) * 99 // 100]:.1f} ms, "
              f"worst {ms[-1]:.1f} ms")
        manager.terminate()


main()
