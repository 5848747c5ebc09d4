#include "transform/ResultDocument.h"

#include <utility>

#include "common/XmlCharacters.h"

namespace onvif_client {

namespace {

/// Whether printing leaves the characters of all texts below the element as they are. Results have
/// no attributes but on their root, and those are our own.
bool PrintsAsItIs(const XMLNode* parent) {
    for (const XMLNode* each = parent->FirstChild(); each != nullptr; each = each->NextSibling()) {
        if (each->ToText() != nullptr ? !HasOnlyXmlCharacters(each->Value())
                                      : !PrintsAsItIs(each)) {
            return false;
        }
    }
    return true;
}

}  // namespace

XMLElement* CResultDocument::Command(std::string_view root, std::string_view name) {
    Settle();
    XMLElement* parent = Root(root);
    XMLElement* command = FirstChild(parent, name);
    return Open(command == nullptr ? Append(parent, name) : command);
}

XMLElement* CResultDocument::AddCommand(std::string_view root, std::string_view name) {
    Settle();
    return Open(Append(Root(root), name));
}

std::string CResultDocument::Print() {
    return document_->Root() == nullptr ? std::string() : document_->Print();
}

std::unique_ptr<const CXmlDocument> CResultDocument::TakeParsed() {
    Settle();
    if (const XMLElement* root = document_->Root(); root != nullptr && !PrintsAsItIs(root)) {
        document_->Load(std::string(document_->Print()));
    }
    open_ = nullptr;
    return std::exchange(document_, std::make_unique<CXmlDocument>());
}

XMLElement* CResultDocument::Root(std::string_view name) {
    if (XMLElement* root = document_->Find(name)) {
        return root;
    }
    // A second root finds its place below the first.
    return document_->Root() == nullptr ? document_->AppendRoot(name)
                                        : Append(document_->Root(), name);
}

XMLElement* CResultDocument::Open(XMLElement* command) {
    open_ = command;
    settled_ = command->LastChild();
    return command;
}

void CResultDocument::Settle() {
    if (open_ == nullptr) {
        return;
    }
    if (settled_ != nullptr) {
        TakeParsedForm(open_->FirstChildElement());
    }
    TakeParsedForm(open_, settled_);
}

}  // namespace onvif_client
