# SPDX-License-Identifier: MIT
"""The medians of a run as tables in Markdown."""

from results import FLOOR, OURS, number

TITLES = {
    "memory": "bytes a node in memory",
    "document": "bytes a node in a document",
    "set": "set an int, ns",
    "connect": "connect and disconnect one observer where 1,000 are connected, ns",
}


def title(results, task):
    for start, text in TITLES.items():
        if task.startswith(start):
            return text + task[len(start):].replace("-", ", ")
    if task.startswith("state bytes"):
        return task
    what = "a look-up" if task.startswith("find") else "a node"
    return f"{task.replace('-', ', ')}: ns {what}"


def reference(results, task, size, names):
    for contender in results.contenders(task):
        if contender in names:
            return results.get(task, contender, size)
    return None


def cell(results, task, contender, size):
    value = results.get(task, contender, size)
    if value is None:
        return ""
    ratios = []
    for names in (FLOOR, OURS):
        base = reference(results, task, size, names)
        ratios.append(f"{value / base:.1f}" if base else "-")
    return f"{number(value)} ({', '.join(ratios)})"


def table(results, task):
    sizes = results.sizes(task)
    lines = [f"| {title(results, task)} | " + " | ".join(f"{size:,}" for size in sizes) + " |",
             "|---" * (len(sizes) + 1) + "|"]
    order = sorted(results.contenders(task), key=lambda name: (
        results.get(task, name, sizes[-1]) or float("inf")))
    for contender in order:
        name = f"**{contender}**" if contender.startswith("KX") else contender
        lines.append(f"| {name} | "
                     + " | ".join(cell(results, task, contender, size) for size in sizes) + " |")
    return "\n".join(lines)


def state_table(results, tasks):
    lines = ["| state | bytes |", "|---|---|"]
    for task in tasks:
        lines.append(f"| {task.split(', ', 1)[1]} | {number(results.get(task, 'KX', 1))} |")
    return "\n".join(lines)


def machine(results):
    context = results.context
    return (f"Medians of {context['repetitions']} repetitions on {context['processor']}, {context['num_cpus']} "
            f"processors, {context['date'][:10]}; {context['compiler']}.")


def tables(results):
    """All of them, as one text."""
    parts = [machine(results),
             "Behind each figure: how many times that of the floor, and of this library (KX declared), it is."]
    tasks = results.tasks()
    state = [task for task in tasks if task.startswith("state bytes")]
    parts.extend(table(results, task) for task in tasks if task not in state)
    if state:
        parts.append(state_table(results, state))
    return "\n\n".join(parts) + "\n"
