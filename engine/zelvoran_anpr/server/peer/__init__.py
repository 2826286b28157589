"""Who is at the other end of a connection: a program of this user, or one that serves others."""
