# Filled in by its area.
