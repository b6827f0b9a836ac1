#include "app/services/SafeFileName.h"

#include <gtest/gtest.h>

TEST(SafeFileName, KeepsNamesInsideTheirFolderAndOffDevicesAndLegalOnesAsTheyAre) {
    const struct {
        std::string name, safe;
    } cases[] = {
        {"Fred Smith 2", "Fred Smith 2"},
        {"x.y@example", "x.y@example"},
        {"Communist", "Communist"},  // begins like a device
        {"com12", "com12"},
        {"LPT", "LPT"},
        {"..", "__"},
        {"..\\..\\x", ".._.._x"},
        {"/etc/passwd", "_etc_passwd"},
        {"c:*?\"<>|", "c_______"},
        {std::string("a\0b\n\x1F\x7F", 6), "a_b___"},
        {"Fred...", "Fred___"},
        {".. . ", "__ _ "},
        {std::string(70, 'x'), std::string(64, 'x')},
        {std::string(63, 'x') + ".y", std::string(63, 'x') + "_"},
        {"", ""},
    };
    for (const auto& [name, safe] : cases) EXPECT_EQ(SafeFileName(name), safe);
    for (const char* device :
         {"con", "NUL", "Aux", "prn", "COM1", "lpt9", "nul.txt", "con ", "Con .x", "CONOUT$", "com\xB9"})
        EXPECT_EQ(SafeFileName(device), "_") << device;
}
