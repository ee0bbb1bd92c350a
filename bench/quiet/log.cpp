// A logging component that drops every line: what a pass costs by itself.

#include "logging/log4cxx_mgr.h"

void Log4cxxMgr::LogOutDetail(int, int, const wchar_t*, int, const wchar_t*) {}
void Log4cxxMgr::LogOutDetail(int, int, const wchar_t*, int, int, const wchar_t*) {}
void Log4cxxMgr::LogOutDetail(int, int, const wchar_t*, int, const wchar_t*, const wchar_t*) {}
