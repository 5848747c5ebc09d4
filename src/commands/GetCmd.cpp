#include "commands/GetCmd.h"

#include "commands/Sender.h"

namespace onvif_client {

namespace {

/// Adds to a command what its row asks for from the cached profiles.
/// @return false when the profiles do not have it.
bool Complete(const ICommandSession& session, const Completion& completion, XMLElement* command) {
    if (completion.source == TokenSource::kNone) {
        return true;
    }
    const auto profiles = session.Profiles();
    const MediaProfile* profile = profiles->empty() ? nullptr : &profiles->front();
    if (completion.source == TokenSource::kIndexedProfile) {
        profile = SelectProfile(*profiles, FirstChild(command, "index"));
    }
    if (profile == nullptr) {
        return false;
    }
    Append(command, completion.element,
           completion.source == TokenSource::kFirstVideoSource ? profile->videoSourceToken
                                                               : profile->token);
    for (const FixedChild& child : completion.fixedChildren) {
        Append(command, child.element, child.text);
    }
    return true;
}

/// The row of a command that can run: known and completed.
const CommandRow* Prepare(const ICommandSession& session, const CommandTable& table,
                          XMLElement* command) {
    const CommandRow* row = FindCommand(table, command->Name());
    return row != nullptr && Complete(session, row->completion, command) ? row : nullptr;
}

/// Builders find a command by its path, so of several with one name each is built from the first.
XMLElement* ParametersOf(CXmlDocument& request, const CommandTable& table, std::string_view name) {
    return request.Find(std::string(table.root) + "/" + std::string(name));
}

}  // namespace

GetAnswer RunGet(ICommandSession& session, std::string_view request, const CommandTable& table) {
    CXmlDocument document(request);
    XMLElement* root = document.Find(table.root);
    GetAnswer answer;
    int lastStatus = status::kNotSent;
    for (XMLElement* command = root == nullptr ? nullptr : root->FirstChildElement();
         command != nullptr; command = command->NextSiblingElement()) {
        if (const CommandRow* row = Prepare(session, table, command)) {
            XMLElement* parameters = ParametersOf(document, table, row->name);
            if (row->fetchPicture != nullptr) {
                std::string found;
                lastStatus = SendCommand(session, *row, parameters, found);
                if (lastStatus == status::kSuccess) {
                    lastStatus = row->fetchPicture(session, found, answer.picture);
                }
                answer.document.clear();
                break;
            }
            lastStatus = SendCommand(session, *row, parameters, answer.document);
        }
        if (!status::LetsRequestGoOn(lastStatus)) {
            answer.document.clear();
            break;
        }
    }
    answer.success = lastStatus == status::kSuccess;
    return answer;
}

std::optional<SignedRequest> FirstRequest(const ICommandSession& session, std::string_view request,
                                          const CommandTable& table) {
    CXmlDocument document(request);
    XMLElement* root = document.Find(table.root);
    XMLElement* command = root == nullptr ? nullptr : root->FirstChildElement();
    const CommandRow* row = command == nullptr ? nullptr : Prepare(session, table, command);
    if (row == nullptr || row->steps.front().build == nullptr) {
        return std::nullopt;
    }
    return MakeRequest(row->steps.front(), {.command = command});
}

bool RunSet(ICommandSession& session, std::string_view request, std::string& result,
            const CommandTable& table) {
    CXmlDocument document(request);
    XMLElement* root = document.Find(table.root);
    for (XMLElement* command = root == nullptr ? nullptr : root->FirstChildElement();
         command != nullptr; command = command->NextSiblingElement()) {
        const CommandRow* row = Prepare(session, table, command);
        if (row == nullptr) {
            continue;
        }
        XMLElement* parameters = ParametersOf(document, table, row->name);
        if (!status::LetsRequestGoOn(SendCommand(session, *row, parameters, result))) {
            return false;
        }
    }
    return true;
}

}  // namespace onvif_client
