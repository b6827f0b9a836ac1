// DataFolder: where the program's own files lie (the alias list "repl.dat", the debug files).
#pragma once

#include "os/Path.h"

// The current relay's, without a separator at its end; the folder of the executable while there is no relay.
os::Path DataFolder();
