"""The steps of ./test: what they are (plan), how each is run (actions), and the order (schedule)."""
