"""Draws number plates of the world: patterns to text, text to glyphs, glyphs to a plate's face."""
