#include "commands/GetCmd.h"

#include <vector>

#include "commands/Asking.h"
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

/// The commands of a request in their order.
class CCommandWalk {
 public:
    CCommandWalk(std::string_view request, const CommandTable& table)
        : document_(request),
          table_(table),
          next_(FirstCommand(document_.Find(table.root))),
          firstOfRow_(table.rows.size()) {}

    /// Goes to the next command, known or not.
    bool Next() {
        command_ = next_;
        next_ = command_ == nullptr ? nullptr : command_->NextSiblingElement();
        return command_ != nullptr;
    }

    /// The row of the command, which gets completed; null when it cannot run.
    const CommandRow* Prepare(const ICommandSession& session) {
        const CommandRow* row = FindCommand(table_, command_->Name());
        if (row == nullptr) {
            return nullptr;
        }
        XMLElement*& first = firstOfRow_[static_cast<std::size_t>(row - table_.rows.data())];
        first = first == nullptr ? command_ : first;
        parameters_ = session.Extensions().Has(Extension::kOwnParameters) ? command_ : first;
        return Complete(session, row->completion, command_) ? row : nullptr;
    }

    /// Builders find a command by its path, so of several with one name each is built from the
    /// first, unless the session has it otherwise.
    CommandElements Elements() const { return {command_, parameters_}; }

 private:
    static XMLElement* FirstCommand(XMLElement* root) {
        return root == nullptr ? nullptr : root->FirstChildElement();
    }

    CXmlDocument document_;
    const CommandTable& table_;
    XMLElement* next_;
    std::vector<XMLElement*> firstOfRow_;
    XMLElement* command_ = nullptr;
    XMLElement* parameters_ = nullptr;
};

int FetchPicture(ICommandSession& session, const CommandRow& row, const CommandElements& command,
                 ResponseBuffer& picture) {
    CResultDocument found;
    const int sent = SendCommand(session, row, command, found);
    return sent == status::kSuccess ? row.fetchPicture(session, found.Print(), picture) : sent;
}

}  // namespace

GetAnswer RunGet(ICommandSession& session, std::string_view request, const CommandTable& table) {
    CCommandWalk walk(request, table);
    CResultDocument result;
    GetAnswer answer;
    int lastStatus = status::kNotSent;
    while (walk.Next()) {
        const CommandRow* row = walk.Prepare(session);
        if (row != nullptr && row->fetchPicture != nullptr) {
            lastStatus = FetchPicture(session, *row, walk.Elements(), answer.picture);
            answer.success = lastStatus == status::kSuccess;
            return answer;
        }
        if (row != nullptr) {
            lastStatus = SendCommand(session, *row, walk.Elements(), result);
        }
        if (!status::LetsRequestGoOn(lastStatus)) {
            return answer;
        }
    }
    answer.success = lastStatus == status::kSuccess;
    answer.document = result.Print();
    return answer;
}

std::optional<SignedRequest> FirstRequest(const ICommandSession& session, std::string_view request,
                                          const CommandTable& table) {
    CCommandWalk walk(request, table);
    const CommandRow* row = walk.Next() ? walk.Prepare(session) : nullptr;
    if (row == nullptr || row->steps.front().build == nullptr || row->loop != ProfileLoop::kNone) {
        return std::nullopt;
    }
    return MakeRequest(row->steps.front(), {.command = walk.Elements().parameters});
}

bool RunSet(ICommandSession& session, std::string_view request, std::string& result,
            const CommandTable& table) {
    CCommandWalk walk(request, table);
    CResultDocument document;
    bool success = true;
    while (success && walk.Next()) {
        if (const CommandRow* row = walk.Prepare(session)) {
            success =
                status::LetsRequestGoOn(SendCommand(session, *row, walk.Elements(), document));
        }
    }
    result = document.Print();
    return success;
}

}  // namespace onvif_client
