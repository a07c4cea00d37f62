// Exposures as a careless or broken host might pass them: bitmap headers of
// every kind with random fields, colour tables and pixel blocks too short,
// too long or just right, RLE streams that end early, and plain noise.
#pragma once
#include <windows.h>
#include <random>
#include <string>

struct DibBlocks {
    std::string header;  // header, masks and colour table: the first block
    std::string bits;    // pixel rows or RLE stream: the second block
};

class HostileDib {
public:
    explicit HostileDib(std::mt19937_64& rng) : m_rng(rng) {}
    DibBlocks Next();
    // What the header says, for messages: size, width x height, bits, compression.
    static std::string Describe(const DibBlocks& d);
    // A drawable 8-bit grey picture, for runs that must show something.
    static DibBlocks Grey(int width, int height);
    // The packed DIB of a BMP file split as a host splits it; false when the
    // file is too short to have a file header.
    static bool FromBmpFile(const std::string& file, DibBlocks& out);

private:
    unsigned Below(unsigned n) { return n ? static_cast<unsigned>(m_rng() % n) : 0; }
    bool Chance(int percent) { return static_cast<int>(Below(100)) < percent; }
    DWORD Any() { return static_cast<DWORD>(m_rng()); }
    std::string Noise(size_t n);
    std::string RleStream(int width, int height, bool fourBit);
    std::string Cut(const std::string& s);

    std::mt19937_64& m_rng;
};
