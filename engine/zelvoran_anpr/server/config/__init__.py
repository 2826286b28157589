"""Files of the server: where they lie, the YAML configuration, the API token."""
