#include <cstring>
#include <string_view>

#include "Listeners.h"
#include "Process.h"
#include "onvif_client/OnvifClient.h"
#include "onvif_client/Version.h"
#include "onvif_client/onvif_client_c.h"

namespace {

using onvif_client_c::CListeners;
using onvif_client_c::SetVariable;

struct ErrorText {
    int error;
    const char* text;
};

constexpr ErrorText kErrorTexts[] = {
    {onvif_client_success, "success"},
    {onvif_client_not_sent, "the request could not be prepared"},
    {onvif_client_no_xml, "the device answered something that is not XML"},
    {onvif_client_no_reply, "the device did not answer"},
    {onvif_client_bad_request, "the device called the request bad, or answered without SOAP"},
    {onvif_client_not_authorized, "the device refused the user name or the password"},
    {onvif_client_failed, "a command of the request failed"},
    {onvif_client_unknown_id, "there is no such session"},
    {onvif_client_bad_argument, "an argument is missing"},
    {onvif_client_no_memory, "memory has run out"},
};

/// The boundary of every function that does more than to pass on: nothing is thrown across it.
template <typename Work>
int Guarded(const Work& work) noexcept {
    try {
        return work();
    } catch (...) {
        return onvif_client_no_memory;
    }
}

int Set(const char* name, const char* value) {
    return Guarded(
        [&] { return SetVariable(name, value) ? onvif_client_success : onvif_client_no_memory; });
}

bool IsLoggedIn(onvif_client_id id) {
    return id != 0 && id != ONVIF_CLIENT_NO_LOGIN_ID &&
           ONVIF_CLIENT_Login(id, "", 0, "", "", nullptr) == id;
}

int Failure(onvif_client_id id) {
    return IsLoggedIn(id) ? onvif_client_failed : onvif_client_unknown_id;
}

/// Without the zero byte behind a document; a picture has none.
std::size_t ContentSize(const char* data, std::size_t size) {
    const std::string_view content(data, size);
    return content.starts_with("<?xml") && content.back() == '\0' ? size - 1 : size;
}

}  // namespace

const char* onvif_client_version(void) {
    return ONVIF_CLIENT_VERSION;
}

const char* onvif_client_error_text(int error) {
    for (const ErrorText& each : kErrorTexts) {
        if (each.error == error) {
            return each.text;
        }
    }
    return "the device caused a failure without a name";
}

int onvif_client_set_extensions(const char* names) {
    return Set("ONVIF_CLIENT_EXTENSIONS", names);
}

int onvif_client_set_traces(const char* where) {
    return Set("ONVIF_CLIENT_TRACE", where);
}

int onvif_client_set_log(const char* level, const char* file) {
    const int set = Set("ONVIF_CLIENT_LOG", level);
    return set == onvif_client_success ? Set("ONVIF_CLIENT_LOG_FILE", file) : set;
}

int onvif_client_start(void) {
    ONVIF_CLIENT_Initial();
    return onvif_client_success;
}

void onvif_client_stop(void) {
    ONVIF_CLIENT_Quit();
}

int onvif_client_login(const char* address, uint16_t port, const char* user, const char* password,
                       onvif_client_id* id) {
    if (id == nullptr) {
        return onvif_client_bad_argument;
    }
    *id = 0;
    if (address == nullptr || user == nullptr || password == nullptr) {
        return onvif_client_bad_argument;
    }
    unsigned int error = 0;
    const unsigned int made =
        ONVIF_CLIENT_Login(ONVIF_CLIENT_NO_LOGIN_ID, address, port, user, password, &error);
    if (made == ONVIF_CLIENT_NO_LOGIN_ID) {
        return error == 0 ? onvif_client_no_memory : static_cast<int>(error);
    }
    *id = made;
    return onvif_client_success;
}

void onvif_client_logout(onvif_client_id id) {
    Guarded([&] {
        CListeners::Instance().Close(id);
        return onvif_client_success;
    });
    ONVIF_CLIENT_Logout(id);
}

int onvif_client_get(onvif_client_id id, const char* request, char** result, size_t* size) {
    std::size_t ignored = 0;
    std::size_t& found = size == nullptr ? ignored : *size;
    found = 0;
    if (result == nullptr) {
        return onvif_client_bad_argument;
    }
    *result = nullptr;
    if (request == nullptr) {
        return onvif_client_bad_argument;
    }
    char* response = nullptr;
    int length = 0;
    const bool success = ONVIF_CLIENT_GetCfg(id, request, response, &length);
    if (!success || response == nullptr || length <= 0) {
        ONVIF_CLIENT_DelResponseBuff(response);
        return success && IsLoggedIn(id) ? onvif_client_success : Failure(id);
    }
    found = ContentSize(response, static_cast<std::size_t>(length));
    *result = response;
    return onvif_client_success;
}

int onvif_client_set(onvif_client_id id, const char* request, char** result, size_t* size) {
    if (size != nullptr) {
        *size = 0;
    }
    if (result == nullptr) {
        return onvif_client_bad_argument;
    }
    *result = nullptr;
    if (request == nullptr) {
        return onvif_client_bad_argument;
    }
    char* response = nullptr;
    if (!ONVIF_CLIENT_SetCfg(id, request, response)) {
        return Failure(id);
    }
    if (size != nullptr) {
        *size = std::strlen(response);
    }
    *result = response;
    return onvif_client_success;
}

void onvif_client_free(char* result) {
    ONVIF_CLIENT_DelResponseBuff(result);
}

int onvif_client_observe(onvif_client_id id, onvif_client_observer observer, void* context) {
    if (observer == nullptr) {
        return onvif_client_bad_argument;
    }
    if (!IsLoggedIn(id)) {
        return onvif_client_unknown_id;
    }
    return Guarded([&]() -> int {
        CListeners::Instance().Observe(id, observer, context);
        if (IsLoggedIn(id)) {
            return onvif_client_success;
        }
        CListeners::Instance().Close(id);  // it was logged out meanwhile
        return onvif_client_unknown_id;
    });
}

void onvif_client_forget(onvif_client_id id) {
    Guarded([&] {
        CListeners::Instance().Forget(id);
        return onvif_client_success;
    });
}
