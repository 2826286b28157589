"""The backends that recognise: a supervised llama-server on this machine, or a remote service."""
