#include "Samples.h"
#include <windows.h>
#include <algorithm>
#include <cstdarg>
#include <cstdio>

double NowMs() {
    static const double perMs = [] {
        LARGE_INTEGER f;
        ::QueryPerformanceFrequency(&f);
        return static_cast<double>(f.QuadPart) / 1000.0;
    }();
    LARGE_INTEGER c;
    ::QueryPerformanceCounter(&c);
    return static_cast<double>(c.QuadPart) / perMs;
}

double Samples::Median() const {
    if (m_ms.empty()) return 0;
    std::vector<double> v = m_ms;
    std::nth_element(v.begin(), v.begin() + v.size() / 2, v.end());
    return v[v.size() / 2];
}

double Samples::Min() const { return m_ms.empty() ? 0 : *std::min_element(m_ms.begin(), m_ms.end()); }

namespace {
std::string Format(const char* format, ...) {
    char buf[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buf, sizeof buf, format, args);
    va_end(args);
    return buf;
}
}  // namespace

void Report::Row(const std::string& figure, const Samples& s, const std::string& floorName,
                 const Samples& floor, double target) {
    const double ratio = floor.Median() > 0 ? s.Median() / floor.Median() : 0;
    std::string verdict;
    if (target > 0) {
        const bool met = ratio <= target;
        m_missed += !met;
        verdict = Format("%s %.1fx", met ? "within" : "MISSED", target);
    }
    m_lines.push_back(Format("| %s | %.3f | %.3f | %s | %.3f | %.2f | %s |", figure.c_str(),
                             s.Median(), s.Min(), floorName.c_str(), floor.Median(), ratio,
                             verdict.c_str()));
}

void Report::Note(const std::string& figure, double ms, const std::string& comment) {
    m_lines.push_back(
        Format("| %s | %.3f | | %s | | | |", figure.c_str(), ms, comment.c_str()));
}

void Report::Print() const {
    std::printf("\n| figure | median ms | min ms | floor in the same run | floor ms | ratio | target |\n"
                "|---|---|---|---|---|---|---|\n");
    for (const auto& line : m_lines) std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}
