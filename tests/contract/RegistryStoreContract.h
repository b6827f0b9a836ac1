// Where the suite's registry comes from: each implementation's test program defines these two.
#pragma once

// Every key of the suite lies below this one.
inline constexpr char kContractKey[] = "software\\Wrenlow contract test";

// Before each test: no value below kContractKey. After it: the same again.
void BeginRegistryTest();
void EndRegistryTest();
