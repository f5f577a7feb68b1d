#pragma once

// What every benchmark shares: a clock, samples of a figure and of its floor taken in
// turn, and one way of printing them. Standard C++ only, so that the floors can be
// programs without Qt.
//
// Each program ends with one machine-readable line that scripts/bench collects:
//   RESULT <name> <figure median> <floor median> <unit>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace bench {

inline double nowMs() {
    using namespace std::chrono;
    return duration<double, std::milli>(steady_clock::now().time_since_epoch()).count();
}

struct Samples {
    std::vector<double> values;

    void add(double v) { values.push_back(v); }
    double median() const {
        if (values.empty())
            return 0;
        std::vector<double> v = values;
        std::sort(v.begin(), v.end());
        const size_t n = v.size();
        return n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
    }
    double min() const {
        return values.empty() ? 0 : *std::min_element(values.begin(), values.end());
    }
    double max() const {
        return values.empty() ? 0 : *std::max_element(values.begin(), values.end());
    }
};

inline void printSide(const char* side, const std::string& what, const Samples& s,
                      const char* unit) {
    std::printf("%-7s %-52s median %9.3f %s  (min %.3f, max %.3f, %zu runs)\n", side, what.c_str(),
                s.median(), unit, s.min(), s.max(), s.values.size());
}

// Runs the figure and its floor in turn, swapping their order every pair, after
// `unrecorded` pairs that warm up and are not kept.
template <typename FigureRun, typename FloorRun>
void alternate(int runs, int unrecorded, FigureRun figureRun, FloorRun floorRun, Samples& figure,
               Samples& floor) {
    for (int i = -unrecorded; i < runs; ++i) {
        double a, b;
        if (i % 2) {
            a = figureRun();
            b = floorRun();
        } else {
            b = floorRun();
            a = figureRun();
        }
        if (i >= 0) {
            figure.add(a);
            floor.add(b);
        }
    }
}

// Prints both sides, their ratio and the RESULT line. The ratio of medians is the
// figure that counts: absolute times drift with the machine's load.
inline void report(const std::string& name, const std::string& figureWhat, const Samples& figure,
                   const std::string& floorWhat, const Samples& floor, const char* unit) {
    printSide("figure", figureWhat, figure, unit);
    printSide("floor", floorWhat, floor, unit);
    const double ratio = floor.median() > 0 ? figure.median() / floor.median() : 0;
    std::printf("ratio   %.2fx\n", ratio);
    std::printf("RESULT %s %.3f %.3f %s\n", name.c_str(), figure.median(), floor.median(), unit);
    std::fflush(stdout);
}

// "--help" prints the method; "--runs N" sets how many pairs run. Other arguments are
// the program's own.
inline int parseRuns(int argc, char** argv, int fallback, const char* method) {
    int runs = fallback;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--help") || !std::strcmp(argv[i], "-h")) {
            std::fputs(method, stdout);
            std::exit(0);
        }
        if (!std::strcmp(argv[i], "--runs") && i + 1 < argc)
            runs = std::atoi(argv[++i]);
    }
    return std::max(1, runs);
}

} // namespace bench
