"""The life of server processes: finding, starting, stopping, restarting and upgrading them."""
