// The mode, status and callback functions under the names callers use. Each
// forwards to the kernel library's entry, so a thread has one mode word, one
// status and one callback whichever name it calls.
#include <orv/orv.h>

uint32_t vtmGetMode(void) { return _vtmGetMode(); }
uint32_t vtmSetMode(uint32_t mode) { return _vtmSetMode(mode); }
int32_t vtmGetErrStatus(void) { return _vtmGetErrStatus(); }
int32_t vtmSetErrStatus(int32_t status) { return _vtmSetErrStatus(status); }
int32_t vtmClearErrStatus(void) { return _vtmClearErrStatus(); }
VtmErrorCallBack vtmGetErrorCallBack(void) { return _vtmGetErrorCallBack(); }
VtmErrorCallBack vtmSetErrorCallBack(VtmErrorCallBack callback) { return _vtmSetErrorCallBack(callback); }
VtmErrorCallBack vtmClearErrorCallBack(void) { return _vtmClearErrorCallBack(); }
