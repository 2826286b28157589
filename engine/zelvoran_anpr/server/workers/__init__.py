"""Reading in processes of its own: what a photo does to its reader, the server survives.

`worker` is the program of such a process, `pool` the server's side of several of them.
"""
