# SPDX-License-Identifier: MIT
"""What a run of the benchmark measured, from the JSON that it wrote."""

import json
import statistics
from collections import defaultdict

# The contenders that the others are compared with.
FLOOR = {"floor", "loop over std::function"}
OURS = {"KX declared", "KX"}
# Repetitions come in a random order, tasks are shown in this one; variants of a task follow it.
TASKS = ["build", "write", "read", "copy", "compare", "merge", "destroy", "find by path", "find by name", "memory",
         "document", "set, told", "set, asked", "set, refused", "set, chain", "connect", "state bytes"]
NANOSECONDS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


class Results:
    """Numbers by task, contender and size: nanoseconds or bytes of one node, look-up or change.

    `of_repetitions` makes one number of those of all repetitions.
    """

    def __init__(self, path, of_repetitions=statistics.median):
        with open(path, encoding="utf-8") as file:
            document = json.load(file)
        self.context = document["context"]
        values = defaultdict(list)
        self.bytes_tasks = set()
        self.errors = []
        for run in document["benchmarks"]:
            if run["run_type"] != "iteration":
                continue
            task, contender, size = run["name"].split("/")[:3]
            size = int(size)
            if run.get("error_occurred"):
                self.errors.append(f"{run['name']}: {run['error_message']}")
            elif "bytes" in run:
                self.bytes_tasks.add(task)
                values[task, contender, size].append(run["bytes"] / size)
            else:
                time = run["real_time" if "manual_time" in run["name"] else "cpu_time"]
                values[task, contender, size].append(
                    time * NANOSECONDS[run["time_unit"]] / run.get("items", 1))
        self.values = {key: of_repetitions(found) for key, found in values.items()}

    def get(self, task, contender, size):
        """The number, or None when it was not measured."""
        return self.values.get((task, contender, size))

    def tasks(self):
        def order(task):
            place = next((i for i, name in enumerate(TASKS) if task.startswith(name)), len(TASKS))
            return place, task.endswith("-members"), task.endswith("-wide"), task

        return sorted({task for task, _, _ in self.values}, key=order)

    def contenders(self, task):
        """The floor first, then this library."""
        return sorted({name for found, name, _ in self.values if found == task},
                      key=lambda name: (name not in FLOOR, not name.startswith("KX"), name))

    def sizes(self, task):
        return sorted({size for found, _, size in self.values if found == task})

    def missing(self):
        """The contenders that could not be had, as a text."""
        return self.context.get("missing", "")


def number(value):
    """A figure with about three digits."""
    if value is None:
        return ""
    if value == 0 or value >= 100:
        return f"{value:,.0f}"
    return f"{value:.1f}" if value >= 10 else f"{value:.2f}"
