#include "documents/RoundTrip.h"

#include <tinyxml2.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "ExitCode.h"
#include "documents/RequestDocument.h"
#include "documents/ResultTable.h"

namespace onvifctl {

namespace {

using tinyxml2::XMLDocument;
using tinyxml2::XMLElement;

enum class Shape {
    kWhole,           // one Set command with the same children
    kPerItem,         // one Set command per item, with the item's children
    kPerEncoderItem,  // one Set command per item, with the item and its multicast beside it
};

struct Row {
    std::string_view get;
    const char* set;
    Shape shape;
    std::array<const char*, 2>
        dropped;  // children of the command or item that a Set has no use for
};

constexpr Row kRows[] = {
    {"imageSettings", "imageSettings", Shape::kWhole, {"status"}},
    {"motion", "motion", Shape::kWhole, {"status", "ruleStatus"}},
    {"videoEncoderCfg", "videoEncodeCfg", Shape::kPerEncoderItem, {"multicast"}},
    {"osd", "setOsd", Shape::kPerItem, {}},
    {"cruises", "modifyCruise", Shape::kPerItem, {"state"}},
    {"presets", "modifyPresetName", Shape::kPerItem, {"position"}},
};

const Row* FindRow(const XMLElement* command) {
    const auto row = std::find_if(std::begin(kRows), std::end(kRows), [command](const Row& each) {
        return each.get == command->Name();
    });
    return row == std::end(kRows) ? nullptr : row;
}

std::string Print(const tinyxml2::XMLNode& node) {
    tinyxml2::XMLPrinter printer(nullptr, true);
    node.Accept(&printer);
    return printer.CStr();
}

std::string TextOf(const XMLElement* parent, const char* name) {
    const XMLElement* child = parent->FirstChildElement(name);
    return child == nullptr || child->GetText() == nullptr ? "" : child->GetText();
}

/// A request that is being written, with its one command.
class CSetRequest {
 public:
    explicit CSetRequest(const Row& row) : row_(row) {
        document_.Parse(MakeRequest("Set", {row.set}).c_str());
        command_ = document_.RootElement()->FirstChildElement();
    }

    void CopyChildren(const XMLElement* from) { CopyChildren(from, command_); }

    /// A multicast beside the items goes out with each of them, so there is one item only.
    void CopyItem(const XMLElement* item) {
        CopyChildren(item, command_->InsertNewChildElement("item"));
        if (const XMLElement* multicast = item->FirstChildElement("multicast")) {
            command_->InsertEndChild(multicast->DeepClone(&document_));
        }
    }

    std::string Text() const { return Print(document_); }

 private:
    bool IsDropped(const XMLElement* child) const {
        // A device that does not tell its grid has an empty area: it would unset all cells.
        const bool empty = child->Name() == std::string_view("area") && child->NoChildren();
        return empty || std::any_of(row_.dropped.begin(), row_.dropped.end(), [child](auto name) {
                   return name != nullptr && child->Name() == std::string_view(name);
               });
    }

    void CopyChildren(const XMLElement* from, XMLElement* to) {
        for (const auto* child = from->FirstChildElement(); child != nullptr;
             child = child->NextSiblingElement()) {
            if (!IsDropped(child)) {
                to->InsertEndChild(child->DeepClone(&document_));
            }
        }
    }

    const Row& row_;
    XMLDocument document_;
    XMLElement* command_ = nullptr;
};

void AddWhole(const Row& row, const XMLElement* command, RoundTrip& found) {
    CSetRequest request(row);
    request.CopyChildren(command);
    found.requests.push_back(request.Text());
}

void AddPerItem(const Row& row, const XMLElement* command, RoundTrip& found) {
    for (const auto* item = command->FirstChildElement("item"); item != nullptr;
         item = item->NextSiblingElement("item")) {
        const std::string osdType = TextOf(item, "osdType");
        if (!osdType.empty() && osdType != "Text") {
            found.remarks.push_back(std::string(row.get) + ": " + TextOf(item, "token") +
                                    " is left out, only texts can be set");
            continue;
        }
        CSetRequest request(row);
        if (row.shape == Shape::kPerEncoderItem) {
            request.CopyItem(item);
        } else {
            request.CopyChildren(item);
        }
        found.requests.push_back(request.Text());
    }
}

/// The commands of a document that can be set. Throws CFailure for any other document.
std::vector<const XMLElement*> Settings(XMLDocument& document, const std::string& text) {
    const auto usage = [](const std::string& message) {
        return CFailure(ExitCode::kUsage, message);
    };
    if (RootOf(text) != "GetResponse") {
        throw usage("this is not a document with the root GetResponse");
    }
    document.Parse(text.c_str(), text.size());
    std::vector<const XMLElement*> commands;
    std::string others;
    for (const auto* command = document.RootElement()->FirstChildElement(); command != nullptr;
         command = command->NextSiblingElement()) {
        commands.push_back(command);
        if (FindRow(command) == nullptr) {
            others += (others.empty() ? "" : ", ") + std::string(command->Name());
        }
    }
    if (!others.empty()) {
        throw usage("what get shows of these cannot be set: " + others + " (but " +
                    RoundTripCommands() + ")");
    }
    const auto failures = Refusals(text);
    if (commands.empty() || !failures.empty()) {
        throw usage("the document holds no settings" +
                    (failures.empty() ? "" : ": " + failures.front()));
    }
    return commands;
}

}  // namespace

RoundTrip SetRequestsFrom(const std::string& getResponse) {
    XMLDocument document;
    RoundTrip found;
    for (const XMLElement* command : Settings(document, getResponse)) {
        const Row& row = *FindRow(command);
        if (row.shape == Shape::kWhole) {
            AddWhole(row, command, found);
        } else {
            AddPerItem(row, command, found);
        }
    }
    return found;
}

std::string PresentItemsRequest(const std::string& getResponse) {
    XMLDocument document;
    std::vector<std::string> words;
    for (const XMLElement* command : Settings(document, getResponse)) {
        if (FindRow(command)->shape == Shape::kWhole) {
            continue;
        }
        words.emplace_back(command->Name());
        for (const auto* item = command->FirstChildElement("item"); item != nullptr;
             item = item->NextSiblingElement("item")) {
            if (item->FirstChildElement("index") != nullptr) {
                words.push_back("--index=" + TextOf(item, "index"));
            }
        }
    }
    return words.empty() ? "" : MakeRequest("Get", words);
}

std::string RoundTripCommands() {
    std::string names;
    for (const Row& row : kRows) {
        names += (names.empty() ? "" : ", ") + std::string(row.get);
    }
    return names;
}

}  // namespace onvifctl
