# SPDX-License-Identifier: MIT
"""Draws time over the number of nodes for every contender, one panel a task; both axes are logarithmic."""

import math
from html import escape

from results import TASKS, number

PLOTTED = 9  # of the tasks, those that take time for every node or look-up

COLORS = ["#000000", "#d62728", "#ff7f0e", "#e377c2", "#1f77b4", "#2ca02c", "#9467bd", "#8c564b",
          "#17becf", "#bcbd22", "#7f7f7f", "#393b79", "#637939"]
COLUMNS, WIDTH, HEIGHT, MARGIN, TOP = 3, 360, 260, 60, 40


class Panel:
    """One task, drawn at a place of the picture."""

    def __init__(self, results, task, left, top, colors):
        self.results, self.task, self.left, self.top, self.colors = results, task, left, top, colors
        self.sizes = results.sizes(task)
        values = [results.get(task, contender, size)
                  for contender in results.contenders(task) for size in self.sizes]
        values = [value for value in values if value]
        self.low = math.floor(math.log10(min(values)))
        self.high = max(math.ceil(math.log10(max(values))), self.low + 1)

    def x(self, size):
        first, last = math.log10(self.sizes[0]), math.log10(self.sizes[-1])
        return self.left + MARGIN + (WIDTH - MARGIN - 35) * (math.log10(size) - first) / max(last - first, 1e-9)

    def y(self, value):
        return self.top + TOP + (HEIGHT - TOP - 30) * (self.high - math.log10(value)) / (self.high - self.low)

    def draw(self):
        what = "look-up" if self.task.startswith("find") else "node"
        yield (f'<text x="{self.left + MARGIN}" y="{self.top + 25}" font-weight="bold">'
               f'{escape(self.task)}: ns per {what}</text>')
        for power in range(self.low, self.high + 1):
            y = self.y(10 ** power)
            yield (f'<path d="M{self.x(self.sizes[0]):.1f} {y:.1f}H{self.x(self.sizes[-1]):.1f}" stroke="#ddd"/>'
                   f'<text x="{self.left + MARGIN - 6}" y="{y + 4:.1f}" text-anchor="end">{10 ** power:,g}</text>')
        for size in self.sizes:
            yield (f'<text x="{self.x(size):.1f}" y="{self.top + HEIGHT - 10}" text-anchor="middle">'
                   f'{size:,}</text>')
        for contender in self.results.contenders(self.task):
            yield self.line(contender)

    def line(self, contender):
        points = [(size, self.results.get(self.task, contender, size)) for size in self.sizes]
        points = [(self.x(size), self.y(value)) for size, value in points if value]
        path = "M" + "L".join(f"{x:.1f} {y:.1f}" for x, y in points)
        width = 3 if contender.startswith("KX") else 1.5
        values = ", ".join(number(self.results.get(self.task, contender, size)) for size in self.sizes)
        return (f'<path d="{path}" fill="none" stroke="{self.colors[contender]}" stroke-width="{width}">'
                f"<title>{escape(contender)}: {values} ns</title></path>")


def legend(colors, top):
    for i, (contender, color) in enumerate(colors.items()):
        x, y = 20 + i % 5 * 210, top + 20 + i // 5 * 20
        yield (f'<path d="M{x} {y - 4}h24" stroke="{color}" stroke-width="3"/>'
               f'<text x="{x + 30}" y="{y}">{escape(contender)}</text>')


def draw(results, path):
    tasks = [task for task in TASKS[:PLOTTED] if task in results.tasks()]
    contenders = dict.fromkeys(name for task in tasks for name in results.contenders(task))
    colors = {name: COLORS[i % len(COLORS)] for i, name in enumerate(contenders)}
    rows = math.ceil(len(tasks) / COLUMNS)
    height = rows * HEIGHT + 30 + 20 * math.ceil(len(colors) / 5)
    parts = []
    for i, task in enumerate(tasks):
        panel = Panel(results, task, i % COLUMNS * WIDTH, i // COLUMNS * HEIGHT, colors)
        parts.extend(panel.draw())
    parts.extend(legend(colors, rows * HEIGHT))
    with open(path, "w", encoding="utf-8") as file:
        file.write(f'<svg xmlns="http://www.w3.org/2000/svg" width="{COLUMNS * WIDTH}" height="{height}" '
                   'font-family="sans-serif" font-size="12">\n<rect width="100%" height="100%" fill="#fff"/>\n'
                   + "\n".join(parts) + "\n</svg>\n")
