"""Measures the programs beside their peers: see README.md. Started by bench/run."""
