/// @file
/// What the modes of test_application share.
#ifndef ONVIF_CLIENT_TESTS_SYSTEM_APPLICATION_H
#define ONVIF_CLIENT_TESTS_SYSTEM_APPLICATION_H

#include <map>
#include <string>

#include "system/AlarmObserver.h"
#include "system/Client.h"

namespace client_test {

using Modes = std::map<std::string, void (*)()>;
/// Those that only this system has.
Modes SystemModes();

/// Ends the program when something does not hold, with the line as its exit status.
void Require(bool holds, int line = __builtin_LINE());
/// With the status that is expected of it.
void End();

unsigned short Port();
unsigned int LoginAtCamera();
CAlarmObserver& Observer();
void RequireCalls();
/// Requires that all works.
void Start();
void StartAndKeepAsking();
/// Never returns.
void EndFrom(void (*callback)(), void (*start)() = StartAndKeepAsking);

}  // namespace client_test

#endif
