#include "common/XmlDocument.h"

#include <cstring>
#include <optional>

#include "common/XmlCharacters.h"
#include "common/XmlReferences.h"

namespace onvif_client {

namespace {

constexpr char kDeclaration[] = "xml version=\"1.0\" encoding=\"UTF-8\"";

/// Takes the first step off @p path.
std::string_view NextStep(std::string_view& path) {
    const std::size_t slash = path.find('/');
    const std::string_view step = path.substr(0, slash);
    path.remove_prefix(slash == std::string_view::npos ? path.size() : slash + 1);
    return step;
}

bool IsBlank(const char* text) {
    while (tinyxml2::XMLUtil::IsWhiteSpace(*text)) {
        ++text;
    }
    return *text == '\0';
}

/// The text as a parser reads it, with a line feed for each carriage return or pair with one;
/// nothing when it has none.
std::optional<std::string> ParsedLineEnds(const char* text) {
    if (std::strchr(text, '\r') == nullptr) {
        return std::nullopt;
    }
    std::string parsed;
    for (; *text != '\0'; ++text) {
        const bool lineEnd = *text == '\r' || *text == '\n';
        parsed += lineEnd ? '\n' : *text;
        if (lineEnd && text[1] == (*text == '\r' ? '\n' : '\r')) {
            ++text;
        }
    }
    return parsed;
}

void TakeParsedAttributes(XMLElement* element) {
    for (const auto* each = element->FirstAttribute(); each != nullptr; each = each->Next()) {
        if (const auto parsed = ParsedLineEnds(each->Value())) {
            element->SetAttribute(each->Name(), parsed->c_str());
        }
    }
}

}  // namespace

CXmlDocument::CXmlDocument() {
    document_.InsertFirstChild(document_.NewDeclaration(kDeclaration));
}

CXmlDocument::CXmlDocument(std::string_view text) {
    Load(text);
}

bool CXmlDocument::Load(std::string_view text) {
    document_.Clear();
    const auto escaped = EscapeStrayAmpersands(text);
    if (escaped) {
        text = *escaped;
    }
    // An empty text is nothing to complain about; tinyxml2 would write a message at length.
    const bool parsed =
        !text.empty() && document_.Parse(text.data(), text.size()) == tinyxml2::XML_SUCCESS;
    const tinyxml2::XMLNode* first = document_.FirstChild();
    if (first == nullptr || first->ToDeclaration() == nullptr) {
        document_.InsertFirstChild(document_.NewDeclaration(kDeclaration));
    }
    return parsed;
}

XMLElement* CXmlDocument::Find(std::string_view path) {
    return FindElement(Root(), path);
}

const XMLElement* CXmlDocument::Find(std::string_view path) const {
    return FindElement(Root(), path);
}

void CXmlDocument::Delete(std::string_view path) {
    if (XMLElement* element = Find(path)) {
        document_.DeleteNode(element);
    }
}

XMLElement* CXmlDocument::AppendRoot(std::string_view name) {
    XMLElement* root = document_.NewElement(std::string(name).c_str());
    document_.InsertEndChild(root);
    return root;
}

const std::string& CXmlDocument::Print() {
    tinyxml2::XMLPrinter printer;
    document_.Print(&printer);
    printed_.assign(printer.CStr(), static_cast<std::size_t>(printer.CStrSize()) - 1);
    ReplaceForbiddenCharacters(printed_);
    return printed_;
}

const XMLElement* FindElement(const XMLElement* start, std::string_view path) {
    if (start == nullptr || path == start->Name()) {
        return start;
    }
    const XMLElement* reached = start;
    do {
        const std::string_view step = NextStep(path);
        if (step != reached->Name()) {
            reached = FirstChild(reached, step);
        }
    } while (reached != nullptr && !path.empty());
    return reached;
}

XMLElement* FindElement(XMLElement* start, std::string_view path) {
    return const_cast<XMLElement*>(FindElement(static_cast<const XMLElement*>(start), path));
}

const XMLElement* FirstChild(const XMLElement* parent, std::string_view name) {
    const XMLElement* child = parent == nullptr ? nullptr : parent->FirstChildElement();
    return child == nullptr || name == child->Name() ? child : NextSibling(child, name);
}

XMLElement* FirstChild(XMLElement* parent, std::string_view name) {
    return const_cast<XMLElement*>(FirstChild(static_cast<const XMLElement*>(parent), name));
}

const XMLElement* NextSibling(const XMLElement* element, std::string_view name) {
    do {
        element = element == nullptr ? nullptr : element->NextSiblingElement();
    } while (element != nullptr && name != element->Name());
    return element;
}

std::string_view TextOf(const XMLElement* element) {
    const tinyxml2::XMLNode* first = element == nullptr ? nullptr : element->FirstChild();
    const tinyxml2::XMLText* text = first == nullptr ? nullptr : first->ToText();
    return text == nullptr ? std::string_view() : text->Value();
}

std::string_view TextAt(const XMLElement* start, std::string_view path) {
    return TextOf(FindElement(start, path));
}

std::string_view NameOf(const XMLElement* element) {
    return element == nullptr ? std::string_view() : element->Name();
}

const char* AttributeOf(const XMLElement* element, const char* name) {
    return element == nullptr ? nullptr : element->Attribute(name);
}

bool SetText(XMLElement* element, const char* value) {
    if (element == nullptr || value == nullptr) {
        return false;
    }
    tinyxml2::XMLNode* first = element->FirstChild();
    if (first == nullptr) {
        element->InsertFirstChild(element->GetDocument()->NewText(value));
        return true;
    }
    first->SetValue(value);
    if (tinyxml2::XMLText* text = first->ToText()) {
        text->SetCData(false);
    }
    return true;
}

bool SetText(XMLElement* element, const std::string& value) {
    return SetText(element, value.c_str());
}

XMLElement* Append(XMLElement* parent, std::string_view path) {
    XMLElement* last = path.empty() ? nullptr : parent;
    while (last != nullptr && !path.empty()) {
        XMLElement* element = last->GetDocument()->NewElement(std::string(NextStep(path)).c_str());
        last->InsertEndChild(element);
        last = element;
    }
    return last;
}

XMLElement* Append(XMLElement* parent, std::string_view path, std::string_view text) {
    XMLElement* last = Append(parent, path);
    if (!text.empty()) {
        SetText(last, std::string(text));
    }
    return last;
}

XMLElement* Append(XMLElement* parent, std::string_view path, std::int32_t value) {
    return Append(parent, path, std::to_string(value));
}

XMLElement* Append(XMLElement* parent, std::string_view path, std::uint32_t value) {
    return Append(parent, path, std::to_string(value));
}

void TakeParsedForm(XMLElement* parent, XMLNode* behind) {
    if (parent == nullptr) {
        return;
    }
    XMLNode* next = behind == nullptr ? parent->FirstChild() : behind->NextSibling();
    while (XMLNode* node = next) {
        next = node->NextSibling();
        if (XMLElement* element = node->ToElement()) {
            TakeParsedAttributes(element);
            TakeParsedForm(element);
        } else if (IsBlank(node->Value())) {
            parent->DeleteChild(node);
        } else if (const auto parsed = ParsedLineEnds(node->Value())) {
            node->SetValue(parsed->c_str());
        }
    }
}

}  // namespace onvif_client
