"""The plate reader: one network for all plates, a straightened picture in, characters out."""
