# SPDX-License-Identifier: MIT
"""Says of each target whether a run held it."""

import json
import os
import subprocess
import tempfile

from results import number

DECLARED, CUSTOM, XML = "KX declared", "KX custom", "KX declared, XML"
SIGNALS, SIGNALS_MUTEX = "Boost.Signals2, no mutex", "Boost.Signals2"

# What the targets need of the benchmark.
FILTER = ("^([^/]*/(floor|KX)"
          "|(write|read|copy|compare)/(pugixml|Boost.Serialization|nlohmann::json|RapidJSON|cereal|Qt 6)/"
          "|(set, told|set, asked|connect)/(Qt 6|Boost.Signals2|libsigc))")


class Check:
    """Makes a line for each target and counts those that were missed."""

    def __init__(self, results):
        self.results = results
        self.small, self.large = results.sizes("build")[0], results.sizes("build")[-1]
        self.lines = []
        self.held, self.missed, self.unknown = 0, 0, 0

    def line(self, what, value, limit, limit_text, unit="ns"):
        """`value` is to be at most `limit`, either of which may be None when it was not measured."""
        if value is None or limit is None:
            self.unknown += 1
            self.lines.append(f"?       {what}: at most {limit_text}: not measured")
            return
        beyond = f", {value / limit:.2f} times that" if 0 < limit < value else ""
        self.verdict(value <= limit,
                     f"{what}: {number(value)} {unit}, at most {number(limit)} ({limit_text}){beyond}")

    def verdict(self, is_held, text):
        self.held += is_held
        self.missed += not is_held
        self.lines.append(f"{'held  ' if is_held else 'MISSED'}  {text}")

    def compare(self, task, ours, other, factor, sizes, other_task=None):
        """Our figure is at most `factor` times the other's."""
        for size in sizes:
            base = self.results.get(other_task or task, other, size)
            text = " ".join(filter(None, [f"{factor:g} times" if factor != 1 else "", other,
                                          other_task if other_task else ""]))
            self.line(f"{task}, {ours}, {size:,}", self.results.get(task, ours, size),
                      base * factor if base else None, text)

    def trees(self):
        sizes = (self.small, self.large)
        for ours in (DECLARED, CUSTOM):
            for other in ("pugixml", "Boost.Serialization", "nlohmann::json"):
                self.compare("write", ours, other, 1, sizes)
            self.compare("write", ours, "RapidJSON", 2, sizes)
            for other in ("Boost.Serialization", "cereal", "nlohmann::json", "Qt 6"):
                self.compare("read", ours, other, 1, sizes)
            self.compare("read", ours, "RapidJSON", 2, sizes)
            self.compare("read", ours, ours, 1.5, sizes, other_task="build")
            self.compare("copy", ours, "nlohmann::json", 1, sizes)
            self.compare("compare", ours, "nlohmann::json", 1, sizes)
            self.compare("compare", ours, "floor", 5, sizes)
        self.compare("copy", DECLARED, "floor", 4, sizes)
        for task in ("write", "read"):
            self.compare(task, XML, DECLARED, 1.3, sizes)
        for size in sizes:
            self.line(f"memory, {DECLARED}, {size:,}", self.results.get("memory", DECLARED, size), 2500,
                      "fixed", "bytes a node")

    def state(self):
        for task in self.results.tasks():
            if task.startswith("state bytes"):
                self.lines.append(f"        {task}: {number(self.results.get(task, 'KX', 1))}")

    def changes(self):
        self.line("set, told, KX, 0", self.results.get("set, told", "KX", 0), 10, "fixed")
        for other in ("Qt 6", SIGNALS):
            self.compare("set, told", "KX", other, 1, (1, 8, 64))
        self.compare("set, told", "KX", "libsigc++", 2, (64,))
        self.compare("set, asked", "KX", SIGNALS, 1, (1, 8))
        for other in ("Qt 6", SIGNALS, SIGNALS_MUTEX):
            self.compare("connect", "KX", other, 1, (1000,))

    def growth(self, task, contender):
        small, large = (self.results.get(task, contender, size) for size in (self.small, self.large))
        return large / small if small and large else None

    def linear(self):
        for task in self.results.tasks():
            # Among very many children the floor finds one by searching through all, which is no excuse.
            floor_task = "find by path" if task.startswith("find by path") else task
            for ours in (DECLARED, CUSTOM, XML):
                grown = self.growth(task, ours)
                if grown is None or task in self.results.bytes_tasks:
                    continue
                floor = max(self.growth(floor_task, "floor") or 1, 1)
                self.line(f"growth, {task}, {ours}", grown, 1.5 * floor, "1.5 times the floor's", "times")

    def allocations(self, bench_allocations):
        """Once what a change needs was made, it is used again."""
        counts = json.loads(subprocess.run([bench_allocations], check=True, stdout=subprocess.PIPE).stdout)
        for observers, count in counts.items():
            self.line(f"allocations, set, asked, KX, {observers}", count, 0, "fixed", "a change")

    def conversion(self, bench_convert, kxmodel, megabytes, repetitions):
        """A large document, against the library's own read and write in the same run."""
        with tempfile.TemporaryDirectory() as folder:
            document, out = os.path.join(folder, "in"), os.path.join(folder, "out")
            own, tool = [], []
            for _ in range(repetitions):
                text = subprocess.run([bench_convert, str(megabytes), document], check=True,
                                      stdout=subprocess.PIPE).stdout
                own.append(json.loads(text))
                tool.append(self.usage_of([kxmodel, "convert", document, out, "--to", "xml"]))
        best = min(measured["read"] + measured["write"] for measured in own)
        time = min(usage.ru_utime + usage.ru_stime for usage in tool)
        self.line(f"convert, {megabytes} MB", time, 2 * best, "2 times the library's read and write", "s")
        explained = own[0]["text_bytes"] + own[0]["tree_bytes"] + own[0]["xml_bytes"]
        self.line(f"convert, {megabytes} MB, peak memory", min(usage.ru_maxrss for usage in tool) * 1024 / 1e6,
                  1.25 * explained / 1e6, "1.25 times both documents and the tree", "MB")

    def bar(self, bench_convert, kxmodel):
        """On a terminal, which script(1) is for the program, the bar comes and goes."""
        with tempfile.TemporaryDirectory() as folder:
            document, out = os.path.join(folder, "in"), os.path.join(folder, "out")
            subprocess.run([bench_convert, "6", document], check=True, stdout=subprocess.DEVNULL)
            seen = subprocess.run(["script", "-qec", f"'{kxmodel}' convert {document} {out} --to xml", "/dev/null"],
                                  check=True, stdout=subprocess.PIPE).stdout.decode()
        states = seen.split("\r")
        self.verdict(any("%" in state for state in states) and not states[-1].strip(),
                     "convert, 6 MB on a terminal: a bar that comes and goes")

    @staticmethod
    def usage_of(command):
        """What a program used of the processor and the memory."""
        process = subprocess.Popen(command)
        _, status, usage = os.wait4(process.pid, 0)
        if status != 0:
            raise RuntimeError(f"{command[0]} ended with {status}")
        return usage
