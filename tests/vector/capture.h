// Records the error entries reached during a scope: the callback keeps each
// record, returns 0 so that the kernel's result stands, and the mode is put
// back at scope exit.
#pragma once

#include <string>
#include <vector>

#include <orv/vtm.h>

struct SeenError { int code; int index; double arg1, arg2, res1, res2; std::string name; };

inline std::vector<SeenError>& seen_errors() {
    static thread_local std::vector<SeenError> v;
    return v;
}

inline int32_t keep_record(VtmErrorContext* c) {
    seen_errors().push_back({c->code, c->index, c->arg1, c->arg2, c->res1, c->res2,
                             std::string(c->functionName, c->functionNameLength)});
    return 0;
}

class ErrorCapture {
public:
    explicit ErrorCapture(uint32_t mode = VTM_ERRMODE_CALLBACK | VTM_FTZDAZ_OFF)
        : old_mode_(_vtmSetMode(mode)) {
        seen_errors().clear();
        _vtmSetErrorCallBack(keep_record);
        _vtmClearErrStatus();
    }
    ~ErrorCapture() {
        _vtmClearErrorCallBack();
        _vtmSetMode(old_mode_);
        _vtmClearErrStatus();
    }
    const std::vector<SeenError>& errors() const { return seen_errors(); }

private:
    uint32_t old_mode_;
};
