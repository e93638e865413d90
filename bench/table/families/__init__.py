"""One module per family: each supplies rows() for the benchmark table."""
