# SPDX-License-Identifier: MIT
"""Runs the benchmark that was built in a folder: run.py [--check | --smoke | --record] FOLDER

The folder gets results.json and plot.svg. With --check, ends with status 1 when a target was missed.
"""

import json
import os
import re
import subprocess
import sys

import plot
import table
from check import FILTER, Check
from results import Results

HERE = os.path.dirname(os.path.abspath(__file__))
BEGIN, END = "<!-- begin of the figures -->\n", "<!-- end of the figures -->\n"

# By the form of the run: the numbers of nodes, other options of the program, how often it repeats everything, and the
# megabytes of the document that is converted.
FORMS = {
    "": ([1000, 10000, 100000], [], 5, 100),
    "--record": ([1000, 10000, 100000], [], 5, 100),
    "--check": ([1000, 100000], [f"--benchmark_filter={FILTER}"], 3, 100),
    "--smoke": ([100, 200], ["--min-time=0.000001"], 1, 1),
}


def processor():
    """What the system calls the processor."""
    try:
        with open("/proc/cpuinfo", encoding="utf-8") as file:
            names = re.findall(r"^model name\s*: (.*)$", file.read(), re.MULTILINE)
    except OSError:
        names = []
    # Commas and equals signs would divide what it is handed on in.
    return re.sub("[,=]", " ", names[0]) if names else "an unknown processor"


def measure(folder, sizes, options, repetitions):
    """The file of the figures."""
    path, part_path, log_path = (os.path.join(folder, name) for name in ("results.json", "part.json", "bench.log"))
    command = [os.path.join(folder, "bench", "bench"), *options, f"--benchmark_out={part_path}",
               f"--benchmark_repetitions={repetitions}", "--benchmark_enable_random_interleaving=true",
               f"--benchmark_context=processor={processor()},repetitions={repetitions}"]
    results = {"benchmarks": []}
    # Each size has a process of its own, and so have the changes: the memory that a large tree has left behind would
    # scatter a small one.
    for size in [*sizes, ""]:
        with open(log_path, "wb") as log:
            status = subprocess.run([*command, f"--sizes={size}"], stdout=log, stderr=log, check=False).returncode
        if status != 0:
            with open(log_path, encoding="utf-8") as log:
                sys.exit(f"{log.read()[-2000:]}the benchmark ended with {status}")
        with open(part_path, encoding="utf-8") as file:
            part = json.load(file)
        results["context"] = part["context"]
        results["benchmarks"] += part["benchmarks"]
    with open(path, "w", encoding="utf-8") as file:
        json.dump(results, file, indent=1)
    return path


def check(results, folder, megabytes, repetitions):
    """The targets and how far they were held."""
    checked = Check(results)
    checked.trees()
    checked.changes()
    checked.linear()
    checked.state()
    programs = os.path.join(folder, "bench")
    checked.allocations(os.path.join(programs, "bench_allocations"))
    tools = os.path.join(programs, "bench_convert"), os.path.join(folder, "tools", "kxmodel")
    checked.bar(*tools)
    checked.conversion(*tools, megabytes, repetitions)
    return checked


def record(results):
    """Puts the figures into the description of the benchmark."""
    path = os.path.join(HERE, "README.md")
    with open(path, encoding="utf-8") as file:
        text = file.read()
    before, rest = text.split(BEGIN)
    _, after = rest.split(END)
    with open(path, "w", encoding="utf-8") as file:
        file.write(before + BEGIN + f"\n![time over size](plot.svg)\n\n{table.tables(results)}\n" + END + after)
    plot.draw(results, os.path.join(HERE, "plot.svg"))


def main():
    form, folder = sys.argv[1:]
    sizes, options, repetitions, megabytes = FORMS[form]
    print("== measuring", flush=True)
    path = measure(folder, sizes, options, repetitions)
    # What other programs do makes times longer, never shorter; the least is what can be compared on a machine
    # that is not quiet.
    results = Results(path, min) if form == "--check" else Results(path)
    is_good = not results.errors
    for error in results.errors:
        print(f"failed: {error}")
    if form in ("--check", "--smoke"):
        checked = check(results, folder, megabytes, repetitions)
    if form == "--check":
        print("\n".join(checked.lines))
        print(f"{checked.held} held, {checked.missed} missed, {checked.unknown} not measured")
        is_good = is_good and checked.missed == 0
    else:
        text = table.tables(results)
        plot.draw(results, os.path.join(folder, "plot.svg"))
        # The figures of a small run say nothing.
        if form != "--smoke":
            print(text)
            print(f"the plot is {os.path.join(folder, 'plot.svg')}")
    print(f"not installed: {results.missing() or 'none'}")
    if form == "--record":
        record(results)
    return 0 if is_good else 1


if __name__ == "__main__":
    sys.exit(main())
