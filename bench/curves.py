"""Curves: lists of points, such as (bits per pixel, mean score)."""

import itertools
import math
from xml.sax.saxutils import escape

# The mean score of photographs that each quality is to give.
MEANT = {30: 45, 40: 52, 50: 58, 60: 64, 70: 70, 75: 73, 80: 76.5, 85: 80.4, 90: 84.7, 95: 89.3,
         98: 92.3}
COMPARED = (60, 70, 75, 80, 85, 90)  # qualities that people ask for, where sizes are compared
TARGETS = tuple(MEANT[quality] for quality in COMPARED)

BITS = (0.1, 0.2, 0.3, 0.5, 0.7, 1, 1.5, 2, 3, 4, 6)  # per pixel

WIDTH, HEIGHT, MARGIN = 720, 480, 56
COLORS = ("#c0392b", "#2c3e50", "#2980b9", "#7f8c8d")


def value_at(curve, score):
    """Bits, or whatever the curve counts, at a score between two measured points; else None."""
    points = sorted(curve, key=lambda point: point[1])
    for (low_value, low), (high_value, high) in zip(points, points[1:]):
        if low <= score <= high and low < high:
            part = (score - low) / (high - low)
            return math.exp(math.log(low_value) * (1 - part) + math.log(high_value) * part)
    return None


def ratio_at_equal_score(curve, other, targets):
    """Mean, over the scores that both reach, of one curve's value divided by the other's."""
    pairs = [(value_at(curve, target), value_at(other, target)) for target in targets]
    ratios = [ours / theirs for ours, theirs in pairs if ours and theirs]
    return sum(ratios) / len(ratios) if ratios else math.nan


def ratios_by_picture(curves, others, targets):
    """{picture: ratio at equal score} of two encoders' {picture: curve}, where both reach a target."""
    ratios = {picture: ratio_at_equal_score(curve, others.get(picture, []), targets)
              for picture, curve in curves.items()}
    return {picture: ratio for picture, ratio in ratios.items() if not math.isnan(ratio)}


def geometric_mean(ratios):
    """NaN where there are none."""
    logarithms = [math.log(ratio) for ratio in ratios]
    return math.exp(sum(logarithms) / len(logarithms)) if logarithms else math.nan


def draw(path, title, curves, ticks=BITS, step=10, bottom=None):
    """An SVG of {name: [(x, y)]} over a logarithmic x-axis that has lines at `ticks`; those of the
    y-axis, which begins at `bottom` where there is one, are `step` apart."""
    points = [point for curve in curves.values() for point in curve]
    left, right = (math.log(limit(x for x, _ in points)) for limit in (min, max))
    top = max(y for _, y in points)
    bottom = min(y for _, y in points) if bottom is None else bottom

    def place(x, y):
        x = MARGIN + (math.log(x) - left) / (right - left) * (WIDTH - 2 * MARGIN)
        y = HEIGHT - MARGIN - (y - bottom) / (top - bottom) * (HEIGHT - 2 * MARGIN)
        return f"{x:.1f},{y:.1f}"

    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}"'
             ' font-family="sans-serif" font-size="13">',
             f'<rect width="{WIDTH}" height="{HEIGHT}" fill="#fff"/>',
             f'<text x="{MARGIN}" y="24" font-size="16">{escape(title)}</text>']
    for line in range(math.ceil(bottom / step), math.floor(top / step) + 1):
        x, y = place(math.exp(left), line * step).split(",")
        parts.append(f'<line x1="{x}" x2="{WIDTH - MARGIN}" y1="{y}" y2="{y}" stroke="#ddd"/>'
                     f'<text x="{MARGIN - 8}" y="{y}" text-anchor="end">{line * step:g}</text>')
    for tick in ticks:
        if left <= math.log(tick) <= right:
            x, y = place(tick, bottom).split(",")
            parts.append(f'<line x1="{x}" x2="{x}" y1="{MARGIN}" y2="{y}" stroke="#eee"/>'
                         f'<text x="{x}" y="{HEIGHT - MARGIN + 20}" text-anchor="middle">{tick}</text>')
    for color, (index, (name, curve)) in zip(itertools.cycle(COLORS), enumerate(curves.items())):
        line = " ".join(place(*point) for point in sorted(curve))
        parts.append(f'<polyline points="{line}" fill="none" stroke="{color}" stroke-width="2"/>'
                     f'<text x="{WIDTH - MARGIN - 240}" y="{HEIGHT - MARGIN - 20 * (index + 1)}"'
                     f' fill="{color}">{escape(name)}</text>')
    path.write_text("\n".join([*parts, "</svg>"]) + "\n", encoding="utf-8")
