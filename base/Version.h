// The version of the program, in one place: the resource script, the about box, the update check and the
// build all read it here. Only preprocessor lines and comments, because the resource compiler reads it too.
#pragma once

#define WRENLOW_VERSION_MAJOR 2
#define WRENLOW_VERSION_MINOR 0
#define WRENLOW_VERSION_REVISION 17
#define WRENLOW_VERSION_TEXT "2.0.17"
