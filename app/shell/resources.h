// Numbers of the resources in the program file. Only preprocessor lines and comments, because the resource
// compiler reads it too.
#pragma once

// The program's icon: the lowest number, because Windows shows the first icon of a program file.
#define IDI_WREN 1
#define IDI_AWAY 2
#define IDI_IDLE 3
#define IDI_CLOSE 4
#define IDI_REPLACER 5
#define IDI_PROFILE 6
