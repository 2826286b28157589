"""Moving bytes: HTTP, resumable downloads, digests, progress; knows of no model or binary."""
