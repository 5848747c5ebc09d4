#include "documents/JsonResults.h"

#include <tinyxml2.h>

#include <string_view>

#include "documents/RequestDocument.h"
#include "vocabulary/Embedded.h"

namespace onvifctl {

namespace {

using tinyxml2::XMLElement;

/// Puts definitions in the places of their names.
void Resolve(Json& shape, const Json& definitions) {
    if (shape.is_string()) {
        shape = Json(definitions.at(shape.get<std::string>()));
    }
    for (Json& part : shape) {
        Resolve(part, definitions);
    }
}

Json ReadShapes() {
    Json shapes = Json::parse(ResultShapes());
    const Json definitions = shapes.at("definitions");
    for (const char* root : {"Get", "Set"}) {
        Resolve(shapes[root], definitions);
    }
    return shapes;
}

const Json& Shapes() {
    static const Json kShapes = ReadShapes();
    return kShapes;
}

std::string TextOf(const XMLElement* element) {
    return element->GetText() == nullptr ? "" : element->GetText();
}

/// What is there when the device has told nothing.
Json Nothing(const Json& shape) {
    Json values = Json::object();
    for (const auto& [name, part] : shape.items()) {
        values[name] = part.is_array() ? Json::array() : Json();
    }
    return values;
}

Json Convert(const XMLElement* element, const Json& shape);

/// An element that has no place in the shape: any number of them may follow.
void AddUnknown(const XMLElement* child, Json& values) {
    Json& list = values[child->Name()];
    Json shape;
    if (child->FirstChildElement() != nullptr || child->FirstAttribute() != nullptr) {
        shape = Json::object();
    }
    list.push_back(Convert(child, shape));
}

void AddChild(const XMLElement* child, const Json& shape, Json& values) {
    const auto part = shape.find(child->Name());
    if (part == shape.end()) {
        AddUnknown(child, values);
    } else if (part->is_array()) {
        values[child->Name()].push_back(Convert(child, part->front()));
    } else if (Json& value = values[child->Name()]; value.is_null()) {
        value = Convert(child, *part);
    }
}

Json Convert(const XMLElement* element, const Json& shape) {
    if (!shape.is_object()) {
        return TextOf(element);
    }
    Json values = Nothing(shape);
    for (const auto* each = element->FirstAttribute(); each != nullptr; each = each->Next()) {
        values[each->Name()] = each->Value();
    }
    if (shape.contains("text")) {
        values["text"] = TextOf(element);
    }
    for (const auto* child = element->FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        AddChild(child, shape, values);
    }
    return values;
}

Json Text(const XMLElement* element) {
    return element == nullptr ? Json() : Json(TextOf(element));
}

Json Error(const Json& code, const Json& description) {
    return Json{{"code", code}, {"description", description}};
}

/// Reads a status, and what stands in it beside an error.
void ReadStatus(const XMLElement* status, const XMLElement* command, const Json& shape,
                Json& result) {
    const XMLElement* code = status->FirstChildElement("errorCode");
    if (TextOf(status) == "fail" && result["error"].is_null()) {
        result["status"] = "fail";
        // Some commands have the code beside the status.
        code = code == nullptr ? command->FirstChildElement("errorCode") : code;
        result["error"] = Error(Text(code), Text(status->FirstChildElement("description")));
    }
    for (const auto* child = status->FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        const std::string_view name = child->Name();
        if (name != "errorCode" && name != "description") {
            AddChild(child, shape, result["values"]);
        }
    }
}

void ReadCommand(const XMLElement* command, const Json& shape, Json& result) {
    Json& values = result["values"];
    if (shape.contains("text")) {
        values["text"] = TextOf(command);
    }
    for (const auto* child = command->FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        const std::string_view name = child->Name();
        if (name == "status") {
            ReadStatus(child, command, shape, result);
        } else if (const auto* status = child->FirstChildElement("status")) {
            ReadStatus(status, child, shape, result);  // of a second request of the command's
        } else if (name != "errorCode") {
            AddChild(child, shape, values);
        }
    }
}

}  // namespace

std::string JsonLine(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

const Json& ResultShape(const std::string& root, const std::string& command) {
    static const Json kNone;
    const Json& shapes = Shapes();
    const auto commands = shapes.find(root);
    const auto shape = commands == shapes.end() ? shapes.end() : commands->find(command);
    return commands == shapes.end() || shape == commands->end() ? kNone : *shape;
}

CJsonResults::CJsonResults(const std::string& camera)
    : document_{{"camera", camera}, {"results", Json::array()}} {}

Json& CJsonResults::Append(const std::string& command, const Json& values) {
    Json& results = document_["results"];
    results.push_back(
        {{"command", command}, {"status", "success"}, {"error", nullptr}, {"values", values}});
    return results.back();
}

void CJsonResults::Add(const std::string& request, const std::string& result) {
    tinyxml2::XMLDocument document;
    document.Parse(result.c_str(), result.size());
    const XMLElement* first =
        document.RootElement() == nullptr ? nullptr : document.RootElement()->FirstChildElement();
    const std::string root = RootOf(request);
    const Json& names = Shapes().at("resultNames").at(root);
    for (const auto* each = first; each != nullptr; each = each->NextSiblingElement()) {
        const std::string command = names.value(each->Name(), std::string(each->Name()));
        const Json& known = ResultShape(root, command);
        const Json shape = known.is_null() ? Json::object() : known;
        ReadCommand(each, shape, Append(command, Nothing(shape)));
    }
}

void CJsonResults::AddFailure(const std::string& request, const std::string& reason) {
    tinyxml2::XMLDocument document;
    document.Parse(request.c_str(), request.size());
    const XMLElement* root = document.RootElement();
    for (const auto* each = root == nullptr ? nullptr : root->FirstChildElement(); each != nullptr;
         each = each->NextSiblingElement()) {
        const Json& shape = ResultShape(root->Name(), each->Name());
        Json& result = Append(each->Name(), Nothing(shape.is_null() ? Json::object() : shape));
        result["status"] = "fail";
        result["error"] = Error(nullptr, reason);
    }
}

void CJsonResults::Fail(const std::string& command, const std::string& reason) {
    for (Json& result : document_["results"]) {
        if (result["command"] == command) {
            result["status"] = "fail";
            result["error"] = Error(nullptr, reason);
        }
    }
}

}  // namespace onvifctl
