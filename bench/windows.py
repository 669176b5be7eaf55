"""Comparisons of the windows."""

ALL = {}
