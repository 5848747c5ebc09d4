#include "transform/ResultDocument.h"

namespace onvif_client {

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
    return document_.Root() == nullptr ? std::string() : document_.Print();
}

XMLElement* CResultDocument::Root(std::string_view name) {
    if (XMLElement* root = document_.Find(name)) {
        return root;
    }
    // A second root finds its place below the first.
    return document_.Root() == nullptr ? document_.AppendRoot(name)
                                       : Append(document_.Root(), name);
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
