#include "common/Extensions.h"

#include <algorithm>
#include <iterator>

#include "common/HttpHead.h"

namespace onvif_client {

namespace {

constexpr std::string_view kAll = "all";

constexpr ExtensionRow kRows[] = {
    {Extension::kHttpFraming, "http-framing",
     "A reply ends where HTTP says so, also without an envelope; chunked bodies are decoded."},
    {Extension::kLargeMessages, "large-messages",
     "Replies of up to 16 MiB, pull replies of up to 4 MiB and requests of up to 1 MiB."},
    {Extension::kOpenFaults, "open-faults",
     "SOAP faults and replies are read whatever HTTP status, prefix or prolog they come with."},
    {Extension::kKeepClock, "keep-clock",
     "A login sets no clock; requests are signed by the device's time."},
    {Extension::kHttpDigest, "http-digest",
     "Requests answer a device that asks for HTTP Digest (MD5 or SHA-256)."},
    {Extension::kMediaFallback, "media-fallback",
     "Where one media service is missing or fails, the other one is asked."},
    {Extension::kPerSourceAlarms, "per-source-alarms",
     "Every source and rule of a device has a state of its own, which stays until it changes."},
    {Extension::kStandardRequests, "standard-requests",
     "Requests are what the official schemas and the services' descriptions want."},
    {Extension::kOwnParameters, "own-parameters",
     "A command reads the parameters of its own element when a document has several of its name."},
    {Extension::kBackgroundSubscription, "background-subscription",
     "Adding an observer returns at once; the subscription is made in the background."},
    {Extension::kKeepAlive, "keep-alive",
     "Two idle connections of a session stay open for up to 5 s and serve its next requests.", true,
     Extension::kHttpFraming},
    {Extension::kQuickLogin, "quick-login",
     "A login sends what does not depend on each other side by side, and asks for nothing twice.",
     true, Extension::kHttpFraming},
    {Extension::kNoBasic, "no-basic", "No password goes out in clear: Basic is never answered.",
     false},
};

}  // namespace

std::span<const ExtensionRow> ExtensionTable() {
    return kRows;
}

std::string_view ExtensionName(Extension extension) {
    const auto* const row =
        std::find_if(std::begin(kRows), std::end(kRows),
                     [extension](const ExtensionRow& each) { return each.extension == extension; });
    return row == std::end(kRows) ? std::string_view() : row->name;
}

CExtensions ReadExtensions(std::string_view list, std::vector<std::string>& unknown,
                           std::vector<const ExtensionRow*>& lacking) {
    CExtensions on;
    while (!list.empty()) {
        const std::string_view name = Trim(TakeUntil(list, ","));
        bool known = name.empty();
        for (const ExtensionRow& row : kRows) {
            if (name == row.name || (name == kAll && row.inAll)) {
                on.Add(row.extension);
                known = true;
            }
        }
        if (!known) {
            unknown.emplace_back(name);
        }
    }
    for (const ExtensionRow& row : kRows) {
        if (on.Has(row.extension) && row.needs && !on.Has(*row.needs)) {
            on.Remove(row.extension);
            lacking.push_back(&row);
        }
    }
    return on;
}

}  // namespace onvif_client
