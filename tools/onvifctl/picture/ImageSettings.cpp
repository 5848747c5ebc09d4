#include "picture/ImageSettings.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>

#include "documents/RequestDocument.h"
#include "documents/ResultDocument.h"

namespace onvifctl {

namespace {

using tinyxml2::XMLElement;

std::optional<double> ToNumber(const std::string& text) {
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    const bool whole = !text.empty() && *end == '\0' && std::isfinite(number);
    return whole ? std::optional(number) : std::nullopt;
}

/// What may be set at a path: a range, or the words that stand there.
struct Permission {
    std::string least;
    std::string most;
    std::vector<std::string> words;
};

Permission PermissionAt(const XMLElement* options, const std::string& path) {
    const XMLElement* option = ElementAt(options, path);
    Permission permission{TextAt(option, "min"), TextAt(option, "max"), {}};
    for (; option != nullptr; option = option->NextSiblingElement(option->Name())) {
        if (option->FirstChildElement() == nullptr) {
            permission.words.push_back(TextAt(option, ""));
        }
    }
    return permission;
}

std::string Describe(const Permission& permission) {
    if (!permission.least.empty() || !permission.most.empty()) {
        return permission.least + " to " + permission.most;
    }
    std::string words;
    for (const std::string& word : permission.words) {
        words += (words.empty() ? "" : ", ") + word;
    }
    return words;
}

void Collect(const XMLElement* group, const std::string& prefix, const XMLElement* options,
             std::vector<ImageSetting>& settings) {
    for (const auto* child = group == nullptr ? nullptr : group->FirstChildElement();
         child != nullptr; child = child->NextSiblingElement()) {
        const std::string path = prefix + child->Name();
        if (child->FirstChildElement() != nullptr) {
            Collect(child, path + "/", options, settings);
        } else if (path != "status") {
            settings.push_back({path, TextAt(child, ""), Describe(PermissionAt(options, path))});
        }
    }
}

}  // namespace

std::vector<ImageSetting> ReadImageSettings(const std::string& settings,
                                            const std::string& options) {
    const CResultDocument present(settings);
    const CResultDocument permitted(options);
    std::vector<ImageSetting> found;
    Collect(present.Command("imageSettings"), "", permitted.Command("imageOpts"), found);
    return found;
}

bool IsPermitted(const ImageChange& change, const std::string& options) {
    const CResultDocument permitted(options);
    const Permission permission = PermissionAt(permitted.Command("imageOpts"), change.path);
    const auto least = ToNumber(permission.least);
    const auto most = ToNumber(permission.most);
    if (least || most) {
        const auto value = ToNumber(change.value);
        return value && (!least || *value >= *least) && (!most || *value <= *most);
    }
    return permission.words.empty() || std::find(permission.words.begin(), permission.words.end(),
                                                 change.value) != permission.words.end();
}

bool SameValue(const std::string& one, const std::string& other) {
    const auto first = ToNumber(one);
    const auto second = ToNumber(other);
    if (first && second) {
        constexpr double kPrecision = 1e-5;  // some devices compute with single precision
        return std::abs(*first - *second) <= kPrecision * std::max(1.0, std::abs(*first));
    }
    return one == other;
}

std::string ImageRequest(const std::string& settings, const std::vector<ImageChange>& changes) {
    const CResultDocument present(settings);
    tinyxml2::XMLDocument request;
    request.Parse(MakeRequest("Set", {"imageSettings"}).c_str());
    XMLElement* command = request.RootElement()->FirstChildElement();
    for (const ImageChange& change : changes) {
        const std::string group = change.path.substr(0, change.path.find('/'));
        if (command->FirstChildElement(group.c_str()) == nullptr) {
            const XMLElement* whole = ElementAt(present.Command("imageSettings"), group);
            command->InsertEndChild(whole->DeepClone(&request));
        }
        XMLElement* element = command;
        for (std::size_t at = 0; at <= change.path.size();) {
            const std::size_t end = std::min(change.path.find('/', at), change.path.size());
            element = element->FirstChildElement(change.path.substr(at, end - at).c_str());
            at = end + 1;
        }
        element->SetText(change.value.c_str());
    }
    tinyxml2::XMLPrinter printer;
    request.Print(&printer);
    return printer.CStr();
}

}  // namespace onvifctl
