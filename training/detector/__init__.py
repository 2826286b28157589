"""The plate detector: one small network, boxes and corners of plates out of photos of any size."""
