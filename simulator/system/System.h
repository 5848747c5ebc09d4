/// @file
/// What the program asks of the system it runs on.
#ifndef SIMULATOR_SYSTEM_SYSTEM_H
#define SIMULATOR_SYSTEM_SYSTEM_H

#include <cstddef>
#include <span>
#include <string>
#include <vector>

/// What stands behind the program's name, in UTF-8.
std::vector<std::string> ProgramWords(int argc, char** argv);

/// Standard output gets the bytes that are written, whoever reads them.
void WriteLinesAsTheyAre();

/// Allows the process as many descriptors as the system lets it have, and says how many those are;
/// 0: there is no such limit.
std::size_t AllowManyDescriptors();

/// The signals by which a person or the system asks the program to end.
std::span<const int> EndSignals();

#endif
