#include "vocabulary/RequestCheck.h"

#include <tinyxml2.h>

#include <algorithm>

#include "ExitCode.h"
#include "vocabulary/Commands.h"
#include "vocabulary/Nearest.h"

namespace onvifctl {

namespace {

using tinyxml2::XMLElement;

CFailure Usage(const std::string& message) {
    return {ExitCode::kUsage, message};
}

CFailure UnknownCommand(const std::string& root, const std::string& name) {
    const std::string suggestion = DidYouMean(name, CommandNames(root));
    const std::string other = root == "Get" ? "Set" : "Get";
    if (const CommandWords* there = FindCommand(other, name)) {
        return Usage("'" + name + "' is a command of " + there->Subcommand() + suggestion);
    }
    return Usage("unknown command '" + name + "'" +
                 (suggestion.empty() ? " ('onvifctl commands' lists them)" : suggestion));
}

CFailure UnknownParameter(const CommandWords& command, const std::string& path,
                          const std::vector<std::string>& options) {
    const std::string start = "unknown parameter '" + path + "' of " + command.name;
    std::vector<std::string> names;
    std::string all;
    for (const ParameterWords& each : command.parameters) {
        names.push_back(each.name);
        all += (all.empty() ? "" : ", ") + each.name;
    }
    if (const std::string nearest = Nearest(path, names); !nearest.empty()) {
        return Usage(start + ": did you mean " + nearest + "?");
    }
    if (const std::string nearest = Nearest(path, options); !nearest.empty()) {
        return Usage(start + ": did you mean the option --" + nearest + "?");
    }
    return Usage(start + (all.empty() ? ", which has none" : "; it has: " + all));
}

void CheckParameters(const CommandWords& command, const XMLElement* element,
                     const std::string& path, const std::vector<std::string>& options) {
    for (const auto* child = element->FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        const std::string name = path + child->Name();
        if (child->FirstChildElement() != nullptr) {
            CheckParameters(command, child, name + "/", options);
        } else if (std::none_of(command.parameters.begin(), command.parameters.end(),
                                [&name](const auto& each) { return each.name == name; })) {
            throw UnknownParameter(command, name, options);
        }
    }
}

}  // namespace

void CheckRequest(const std::string& request, const std::vector<std::string>& options) {
    tinyxml2::XMLDocument document;
    document.Parse(request.c_str(), request.size());
    const XMLElement* root = document.RootElement();
    for (const auto* each = root == nullptr ? nullptr : root->FirstChildElement(); each != nullptr;
         each = each->NextSiblingElement()) {
        const CommandWords* command = FindCommand(root->Name(), each->Name());
        if (command == nullptr) {
            throw UnknownCommand(root->Name(), each->Name());
        }
        CheckParameters(*command, each, "", options);
    }
}

}  // namespace onvifctl
