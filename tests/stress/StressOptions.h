// Options of one stress run: the seed that replays it and its size.
#pragma once
#include <string>

struct StressOptions {
    unsigned long long seed = 20240611;
    int rounds = 150;
    std::string bmpsuite;  // Windows path with a trailing backslash, or empty
};

StressOptions& Options();
// What the run is doing, printed with the seed when the process crashes.
void SetContext(const std::string& what);
// A seed for one part of the run, derived from the run's seed.
unsigned long long SubSeed(const char* part, int round = 0);
