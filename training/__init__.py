"""Trains the package's own plate detector and plate reader; not part of the installed package."""
