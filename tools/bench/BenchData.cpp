#include "BenchData.h"
#include <windows.h>
#include <cstdio>
#include <vector>

namespace {

std::string ReadAll(const std::string& path) {
    std::string text;
    if (FILE* f = std::fopen(path.c_str(), "rb")) {
        char buf[65536];
        for (size_t n; (n = std::fread(buf, 1, sizeof buf, f)) > 0;) text.append(buf, n);
        std::fclose(f);
    }
    return text;
}

void WriteAll(const std::string& path, const std::string& bytes) {
    if (FILE* f = std::fopen(path.c_str(), "wb")) {
        std::fwrite(bytes.data(), 1, bytes.size(), f);
        std::fclose(f);
    }
}

// The settings without the shipped catalog and selection mode.
std::string SettingsOnly(const std::string& text) {
    std::string kept;
    bool keep = true;
    for (size_t start = 0; start < text.size();) {
        size_t end = text.find('\n', start);
        end = end == std::string::npos ? text.size() : end + 1;
        const std::string line = text.substr(start, end - start);
        start = end;
        if (!line.empty() && line[0] == '[')
            keep = line.compare(0, 9, "[Template") != 0 && line.compare(0, 13, "[SelectionDlg") != 0;
        if (keep) kept += line;
    }
    return kept;
}

// Takes spread over the layout area, sensors and orientations alternating,
// each with the teeth of one region of the dentition.
std::string TakeFile(int number, int takes) {
    static const char* kTeeth[] = {"18,17,16", "15,14,13", "12,11,21,22", "23,24,25",
                                   "26,27,28", "38,37,36", "35,34,33", "32,31,41,42",
                                   "43,44,45", "46,47,48"};
    std::string text;
    for (int k = 1; k <= takes; ++k) {
        char section[1024];
        std::snprintf(section, sizeof section,
                      "[Take_%d_%d]\r\nSensor=%d\r\nSensorOrientation=%d\r\nTeeth=%s\r\n"
                      "Holder=1\r\nWindowPositionX=%d\r\nWindowPositionY=%d\r\n"
                      "ZoomNominator=1\r\nZoomDenominator=4\r\n",
                      number, k, 1 + k % 3, k % 2, kTeeth[k % 10], 80 + (k - 1) % 8 * 100,
                      60 + (k - 1) / 8 * 170);
        text += section;
    }
    return text;
}

// What the designer writes: a 24-bit 200 x 150 BMP.
std::string Thumbnail(int seed) {
    const int w = 200, h = 150, stride = w * 3;
    BITMAPFILEHEADER file{};
    BITMAPINFOHEADER info{};
    info.biSize = sizeof info;
    info.biWidth = w;
    info.biHeight = h;
    info.biPlanes = 1;
    info.biBitCount = 24;
    file.bfType = 0x4D42;
    file.bfOffBits = sizeof file + sizeof info;
    file.bfSize = file.bfOffBits + stride * h;
    std::string bytes(reinterpret_cast<char*>(&file), sizeof file);
    bytes.append(reinterpret_cast<char*>(&info), sizeof info);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const bool take = (x / 25 + y / 30 + seed) % 3 == 0;
            bytes += static_cast<char>(take ? 40 : 90);
            bytes += static_cast<char>(take ? 200 : 90);
            bytes += static_cast<char>(take ? 40 + seed % 200 : 90);
        }
    return bytes;
}

}  // namespace

BenchData::BenchData(std::string settings, std::string root)
    : m_settings(std::move(settings)), m_root(std::move(root)) {
    ::CreateDirectoryA(m_root.c_str(), nullptr);
}

std::string BenchData::Base(const std::string& name, int count, int takes, int firstTakes) const {
    const std::string base = m_root + name + "\\";
    const std::string folder = base + "Template\\";
    ::CreateDirectoryA(base.c_str(), nullptr);
    ::CreateDirectoryA(folder.c_str(), nullptr);
    std::string catalog = SettingsOnly(ReadAll(m_settings)) + "\r\n[SelectionDlg]\r\nMode=0\r\n";
    for (int n = 1; n <= count; ++n) {
        char entry[128];
        std::snprintf(entry, sizeof entry, "[Template%d]\r\nName=Aufnahmeschema %d\r\n", n, n);
        catalog += entry;
        const std::string stem = folder + "Template" + std::to_string(n);
        WriteAll(stem + ".ini", TakeFile(n, n == 1 ? firstTakes : takes));
        WriteAll(stem + ".bmp", ::Thumbnail(n));
    }
    WriteAll(folder + "Zemblax.ini", catalog);
    return base;
}

std::string BenchData::Thumbnail(const std::string& base, int number) {
    return base + "Template\\Template" + std::to_string(number) + ".bmp";
}
