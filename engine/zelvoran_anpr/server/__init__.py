"""The REST server: its configuration, its life as a process, its web service and dashboard.

`config` knows files, `daemon` knows processes and uses `config`, `web` answers requests and uses
`config`; `serve` is the program that a server process runs and the only one that knows all three.
"""
