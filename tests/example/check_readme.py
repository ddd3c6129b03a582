#!/usr/bin/python3
"""Runs the commands that the README's first screen shows and compares their output with what it prints.

A line "..." there stands for any number of lines. Sizes, times and counts of what is imported are not compared: they are
this machine's, or grow with what the import can read.

Usage: check_readme.py --readme README.md --bin BIN --work DIRECTORY   (with lug.frd, lug.inp and extract.cfg in it)
"""
import argparse
import os
import re
import subprocess
import sys


def shown_commands(readme):
    """Pairs of a command and the lines that follow it in the first block of the README."""
    block = re.search(r"^```\n(\$ .*?)^```$", open(readme, encoding="utf-8").read(), re.S | re.M).group(1)
    commands = []
    for line in block.splitlines():
        if line.startswith("$ "):
            commands.append((line[2:], []))
        else:
            commands[-1][1].append(line)
    return commands


def pattern_of(lines):
    parts = []
    for line in lines:
        if line == "...":
            parts.append(r"(?:.*\n)*?")
        elif re.match(r"\S+: \d+ steps, ", line):
            parts.append(re.sub(r"\d+(\\\.\d+)?", r"\\d+(?:\\.\\d+)?", re.escape(line)) + r"\n")
        else:
            parts.append(re.escape(line) + r"\n")
    return "".join(parts)


def main():
    parser = argparse.ArgumentParser()
    for option in ("readme", "bin", "work"):
        parser.add_argument("--" + option, required=True)
    options = parser.parse_args()
    environment = {**os.environ, "PATH": os.path.abspath(options.bin) + ":" + os.environ["PATH"]}
    commands = shown_commands(options.readme)
    for command, lines in commands:
        run = subprocess.run(["bash", "-c", command], cwd=options.work, env=environment, stdout=subprocess.PIPE,
                             text=True, check=True, timeout=300)
        if not re.fullmatch(pattern_of(lines), run.stdout):
            sys.exit(f"the README shows for: {command}\n" + "\n".join(lines) + f"\nbut it prints:\n{run.stdout}")
    if len(commands) < 4:
        sys.exit("the README's first block shows fewer commands than the main job takes")
    print(f"{len(commands)} commands print what the README shows")


if __name__ == "__main__":
    main()
