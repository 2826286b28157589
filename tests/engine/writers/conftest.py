"""Makes the modules of this folder importable from its tests."""
