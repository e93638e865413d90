#!/usr/bin/env bash
# Exported symbols of the built libraries are exactly those the public headers declare.
exec python3 "$(dirname "$0")/check_symbols.py" "$@"
