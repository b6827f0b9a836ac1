// What a fuzz target demands of the code beyond not crashing.
#pragma once

#include <cstdio>
#include <cstdlib>

inline void Check(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "violated: %s\n", what);
    std::abort();
}
