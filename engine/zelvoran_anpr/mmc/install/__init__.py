"""Putting the model files and llama-server in place, finding them, and taking them away again."""
