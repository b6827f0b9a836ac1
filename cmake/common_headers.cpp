// Only there for the headers that are compiled with it; see layers.cmake.
