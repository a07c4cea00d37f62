// The boundary of every exported function: the module's resources for the
// duration of the call, and no exception into the host. An exception that
// reaches here is a fault of ours; its cause goes to the debugger's output so
// that it is not lost with the failure value.
#pragma once
#include <exception>
#include "fw/Module.h"

void ReportExportException(const char* function, const char* cause) noexcept;

template <typename R, typename F>
R Guarded(const char* function, R failure, F&& call) noexcept {
    try {
        fw::ModuleState state;
        return call();
    } catch (const std::exception& e) {
        ReportExportException(function, e.what());
    } catch (...) {
        ReportExportException(function, "unknown exception");
    }
    return failure;
}
