#include "ptz/NamedItems.h"

#include "documents/RequestDocument.h"

namespace onvifctl {

CNamedItems::CNamedItems(CResultOutput& output, const ItemKind& kind)
    : kind_(kind), result_(output.Ask(MakeRequest("Get", {kind.command}))) {}

const tinyxml2::XMLElement* CNamedItems::ItemOf(const std::string& token) const {
    for (const auto* item : Items()) {
        if (TextAt(item, kind_.token) == token) {
            return item;
        }
    }
    return nullptr;
}

std::vector<std::string> CNamedItems::Matches(const std::string& tokenOrName) const {
    std::vector<std::string> named;
    for (const auto* item : Items()) {
        std::string token = TextAt(item, kind_.token);
        if (token == tokenOrName) {
            return {token};
        }
        if (TextAt(item, kind_.name) == tokenOrName) {
            named.push_back(std::move(token));
        }
    }
    return named;
}

std::string CNamedItems::TokenOf(const std::string& tokenOrName) const {
    const auto matches = Matches(tokenOrName);
    if (matches.size() == 1) {
        return matches.front();
    }
    const std::string noun = kind_.noun;
    std::string message = matches.empty() ? "there is no " + noun + " '" + tokenOrName + "'"
                                          : "more than one " + noun + " is called '" + tokenOrName +
                                                "'; say which by its token:";
    for (const std::string& token : matches) {
        message += " " + token;
    }
    throw CFailure(ExitCode::kUsage, message);
}

}  // namespace onvifctl
