/// @file
/// What the system knows of the process.
#ifndef ONVIF_CLIENT_BINDINGS_C_PROCESS_H
#define ONVIF_CLIENT_BINDINGS_C_PROCESS_H

namespace onvif_client_c {

/// Tells a forked child from its parent.
unsigned long ProcessId();

/// Sets a variable of the environment, or takes it away for a null value. Texts are UTF-8.
/// @return false when the system refuses it.
bool SetVariable(const char* name, const char* value);

}  // namespace onvif_client_c

#endif
