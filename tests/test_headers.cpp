// Only there for the headers that are compiled with it; see CMakeLists.txt.
