#include "plugin/ExportGuard.h"
#include <windows.h>
#include <cstdio>

void ReportExportException(const char* function, const char* cause) noexcept {
    char line[512];
    std::snprintf(line, sizeof line, "Zemblax: %s failed: %s\n", function, cause);
    ::OutputDebugStringA(line);
}
