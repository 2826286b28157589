"""The web service: an engine kept warm behind a bounded pool, and the guards before it."""
