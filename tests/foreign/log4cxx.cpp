// The logging component by another compiler. The recorder, which it tells, has a DLL of its own
// here; and the tests, which look for the recorder in the logging component, are sent on.

#include "tests/recorder/log4cxx_mgr.cpp"

#pragma comment(linker, "/export:RecorderAdd=recorder.RecorderAdd")
#pragma comment(linker, "/export:RecorderCount=recorder.RecorderCount")
#pragma comment(linker, "/export:RecorderLine=recorder.RecorderLine")
#pragma comment(linker, "/export:RecorderLive=recorder.RecorderLive")
#pragma comment(linker, "/export:RecorderReset=recorder.RecorderReset")
#pragma comment(linker, "/export:RecorderScript=recorder.RecorderScript")
#pragma comment(linker, "/export:RecorderScriptThrow=recorder.RecorderScriptThrow")
#pragma comment(linker, "/export:RecorderSetState=recorder.RecorderSetState")

extern "C" int _fltused;
int _fltused;
