#include "documents/RequestDocument.h"

#include <tinyxml2.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "ExitCode.h"
#include "system/FilePath.h"

namespace onvifctl {

namespace {

using tinyxml2::XMLElement;

CFailure Usage(const std::string& message) {
    return {ExitCode::kUsage, message};
}

/// Refuses what tinyxml2 would print into a document that nobody can read.
void CheckName(const std::string& name) {
    const bool firstFits =
        !name.empty() && (std::isalpha(static_cast<unsigned char>(name[0])) != 0);
    if (!firstFits || name.find_first_not_of(
                          "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-.") !=
                          std::string::npos) {
        throw Usage("'" + name + "' is not a name");
    }
}

XMLElement* AddChild(XMLElement* parent, const std::string& name) {
    CheckName(name);
    return parent->InsertNewChildElement(name.c_str());
}

void AddParameter(XMLElement* command, const std::string& path, const std::string& value) {
    std::istringstream steps(path.starts_with('/') ? path.substr(1) : path);
    XMLElement* element = command;
    for (std::string step; std::getline(steps, step, '/');) {
        // The last step is always new: a parameter may be given more than once.
        XMLElement* present = steps.eof() ? nullptr : element->LastChildElement(step.c_str());
        element = present != nullptr ? present : AddChild(element, step);
    }
    if (element == command) {
        throw Usage("'--' is not a parameter");
    }
    element->SetText(value.c_str());
}

std::string Print(const tinyxml2::XMLDocument& document) {
    tinyxml2::XMLPrinter printer;
    document.Print(&printer);
    return printer.CStr();
}

}  // namespace

std::string MakeRequest(const std::string& root, const std::vector<std::string>& words) {
    tinyxml2::XMLDocument document;
    document.InsertFirstChild(document.NewDeclaration());
    XMLElement* top = document.NewElement(root.c_str());
    document.InsertEndChild(top);
    top->SetAttribute("version", "1.0");
    top->SetAttribute("systemType", "ipc");

    XMLElement* command = nullptr;
    for (auto word = words.begin(); word != words.end(); ++word) {
        if (!word->starts_with("--")) {
            command = AddChild(top, *word);
            continue;
        }
        if (command == nullptr) {
            throw Usage("'" + *word + "' stands before any command");
        }
        const std::size_t equals = word->find('=');
        if (equals != std::string::npos) {
            AddParameter(command, word->substr(2, equals - 2), word->substr(equals + 1));
        } else if (std::next(word) != words.end()) {
            AddParameter(command, word->substr(2), *std::next(word));
            ++word;
        } else {
            throw Usage("'" + *word + "' has no value");
        }
    }
    if (command == nullptr) {
        throw Usage("no command is given");
    }
    return Print(document);
}

std::string ReadDocument(const std::string& file, const std::vector<std::string>& roots) {
    std::string text;
    if (file == "-") {
        text.assign(std::istreambuf_iterator<char>(std::cin), {});
    } else {
        std::ifstream stream(PathOf(file), std::ios::binary);
        if (!stream) {
            throw Usage("cannot read '" + file + "'");
        }
        text.assign(std::istreambuf_iterator<char>(stream), {});
    }
    if (std::find(roots.begin(), roots.end(), RootOf(text)) == roots.end()) {
        std::string wanted;
        for (const std::string& root : roots) {
            wanted += (wanted.empty() ? "" : " or ") + root;
        }
        throw Usage("'" + file + "' is not a request document with the root " + wanted);
    }
    return text;
}

std::string RootOf(const std::string& document) {
    tinyxml2::XMLDocument parsed;
    const bool readable = parsed.Parse(document.c_str(), document.size()) == tinyxml2::XML_SUCCESS;
    return readable && parsed.RootElement() != nullptr ? parsed.RootElement()->Name() : "";
}

}  // namespace onvifctl
