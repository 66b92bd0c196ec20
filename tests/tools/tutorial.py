#!/usr/bin/env python3
"""Does what the tutorial of docs/debugger.md says, line by line, and compares what comes out with what stands there.

    tutorial.py MANUAL EXAMPLE_FOLDER KIV_RUN ROM_FOLDER
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile

manual, example, kiv_run, roms = sys.argv[1:]
if shutil.which("pasmo") is None:
    print("pasmo is NOT INSTALLED: the tutorial was not tried")
    sys.exit(77)
with open(manual, encoding="utf-8") as file:
    chapter = re.search(r"^## A fault found\n(.*?)^## ", file.read(), re.M | re.S).group(1)
lines = "\n".join(re.findall(r"^```\n(.*?)^```$", chapter, re.M | re.S)).splitlines()
lines = [line for line in lines if line]

with tempfile.TemporaryDirectory() as folder:
    for name in os.listdir(example):
        shutil.copy(os.path.join(example, name), folder)
    os.symlink(kiv_run, os.path.join(folder, "kiv-run"))
    environment = dict(os.environ, PATH=folder + ":" + os.environ["PATH"])
    shell = [line[2:].replace("ROMS", "'" + roms + "'") for line in lines if line.startswith("$ ")]
    console = [line[5:] for line in lines if line.startswith("kiv> ")]
    assert len(shell) == 3 and len(console) > 8, (shell, console)
    for command in shell[:-1]:
        subprocess.run(command, shell=True, cwd=folder, env=environment, check=True)
    run = subprocess.run(shell[-1], shell=True, cwd=folder, env=environment, input="\n".join(console) + "\n",
                         stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, timeout=300)

wanted = [line for line in lines if not line.startswith(("$ ", "kiv> "))]
pattern = "".join("(?:.*\n)*?" if line == "..." else re.escape(line) + "\n" for line in wanted)
if run.returncode != 0 or not re.fullmatch(pattern, run.stdout):
    print("exit code", run.returncode, "\n--- the tutorial says\n" + "\n".join(wanted) + "\n--- and what came is\n" + run.stdout)
    sys.exit(1)
