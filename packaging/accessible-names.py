#!/usr/bin/env python3
"""Prints what a screen reader finds on the session's bus: one line per name of every program's objects."""

import pyatspi


def walk(item, depth=0):
    if item is None or depth > 40:
        return
    if item.name:
        print(item.name)
    for i in range(min(item.childCount, 500)):
        walk(item.getChildAtIndex(i), depth + 1)


walk(pyatspi.Registry.getDesktop(0))
