/* The header as strict C99 reads it, and every function as C links it. */
#include "onvif_client/onvif_client_c.h"

typedef void (*Function)(void);

const Function* LinkedFunctions(size_t* count);

const Function* LinkedFunctions(size_t* count) {
    static const Function kFunctions[] = {
        (Function)onvif_client_version,    (Function)onvif_client_error_text,
        (Function)onvif_client_set_log,    (Function)onvif_client_set_extensions,
        (Function)onvif_client_set_traces, (Function)onvif_client_start,
        (Function)onvif_client_stop,       (Function)onvif_client_login,
        (Function)onvif_client_logout,     (Function)onvif_client_get,
        (Function)onvif_client_set,        (Function)onvif_client_free,
        (Function)onvif_client_observe,    (Function)onvif_client_forget};
    *count = sizeof kFunctions / sizeof kFunctions[0];
    return kFunctions;
}
