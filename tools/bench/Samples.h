// Timings of one figure and the table the benchmark prints.
#pragma once
#include <string>
#include <vector>

double NowMs();

class Samples {
public:
    void Add(double ms) { m_ms.push_back(ms); }
    bool Empty() const { return m_ms.empty(); }
    double Median() const;
    double Min() const;
    // Runs `step` n times, each timed alone.
    template <typename F>
    static Samples Time(int n, F step) {
        Samples s;
        for (int i = 0; i < n; ++i) {
            const double start = NowMs();
            step(i);
            s.Add(NowMs() - start);
        }
        return s;
    }

private:
    std::vector<double> m_ms;
};

class Report {
public:
    // target: the ratio to stay within, 0 for none.
    void Row(const std::string& figure, const Samples& s, const std::string& floorName,
             const Samples& floor, double target = 0);
    // A figure without a floor of its own (growth, absolute times).
    void Note(const std::string& figure, double ms, const std::string& comment);
    void Print() const;
    int Missed() const { return m_missed; }

private:
    std::vector<std::string> m_lines;
    int m_missed = 0;
};
