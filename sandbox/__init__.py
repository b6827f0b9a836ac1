"""A small OSCAR service and a stand-in for the AIM client, to try the relay and to test it end to end.

Python's standard library only. Nothing here is shared with the relay: its frame code would hide its own faults.
"""
