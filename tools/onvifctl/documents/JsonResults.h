/// @file
/// Result documents as JSON, in shapes that docs/result-shapes.json fixes for every command.
#ifndef ONVIFCTL_DOCUMENTS_JSONRESULTS_H
#define ONVIFCTL_DOCUMENTS_JSONRESULTS_H

#include <nlohmann/json.hpp>
#include <string>

namespace onvifctl {

using Json = nlohmann::ordered_json;

/// One line of JSON; what is no UTF-8 becomes U+FFFD.
std::string JsonLine(const Json& value);

/// What a command's values look like: null where a text stands, a list of one shape where any
/// number does. Null for an unknown command. @p root: "Get" or "Set".
const Json& ResultShape(const std::string& root, const std::string& command);

/// {"camera": ..., "results": [{"command", "status", "error", "values"} ...]}.
class CJsonResults {
 public:
    explicit CJsonResults(const std::string& camera);

    /// Adds what a device made of a request.
    void Add(const std::string& request, const std::string& result);

    /// Adds a failure for every command of a request that has no result.
    void AddFailure(const std::string& request, const std::string& reason);

    /// Lets a command have failed that the device said succeeded.
    void Fail(const std::string& command, const std::string& reason);

    std::string Line() const { return JsonLine(document_); }

 private:
    Json& Append(const std::string& command, const Json& values);

    Json document_;
};

}  // namespace onvifctl

#endif
