#include "templates/ToothList.h"
#include <cstdlib>

std::vector<int> ParseToothList(const std::string& text, TrailingComma rule) {
    std::vector<int> teeth;
    size_t start = 0;
    for (;;) {
        const size_t comma = text.find(',', start);
        if (comma == std::string::npos) {
            const bool emptyTail = start == text.size();
            if (!emptyTail || rule == TrailingComma::CountsAsToothZero)
                teeth.push_back(std::atoi(text.c_str() + start));
            return teeth;
        }
        teeth.push_back(std::atoi(text.substr(start, comma - start).c_str()));
        start = comma + 1;
    }
}
