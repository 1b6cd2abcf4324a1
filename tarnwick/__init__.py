"""A local stand-in of the Tarnwick hosting service, for demonstrations, development and tests."""
