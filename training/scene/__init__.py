"""Puts drawn plates into the world as cameras see it: on cars, in light, through lenses."""
