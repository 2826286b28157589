"""Reads archives of photos on many cores and machines; needs the extra `fleet`.

`python -m zelvoran_anpr.fleet read SOURCE --out TARGET`; `ray_reader` is for those who run Ray.
"""
