/// @file
/// Presets and tours by token or by name, as people call them.
#ifndef ONVIFCTL_PTZ_NAMEDITEMS_H
#define ONVIFCTL_PTZ_NAMEDITEMS_H

#include <string>
#include <vector>

#include "ResultOutput.h"
#include "documents/ResultDocument.h"

namespace onvifctl {

/// A kind of things that a device lists, and what the result document calls them.
struct ItemKind {
    const char* noun;
    const char* command;
    const char* token;
    const char* name;
};

inline constexpr ItemKind kPresetKind = {"preset", "presets", "presetToken", "presetName"};
inline constexpr ItemKind kTourKind = {"tour", "cruises", "token", "name"};

/// What the device lists of a kind, asked for once.
class CNamedItems {
 public:
    /// Throws CFailure when the device does not tell.
    CNamedItems(CResultOutput& output, const ItemKind& kind);

    std::vector<const tinyxml2::XMLElement*> Items() const { return result_.Items(kind_.command); }

    /// The item that bears this token; null when there is none.
    const tinyxml2::XMLElement* ItemOf(const std::string& token) const;

    /// Whether something bears this token or this name.
    bool Has(const std::string& tokenOrName) const { return !Matches(tokenOrName).empty(); }

    /// The token of what bears this token or, if none does, this name. Throws CFailure when there
    /// is nothing or more than one.
    std::string TokenOf(const std::string& tokenOrName) const;

 private:
    std::vector<std::string> Matches(const std::string& tokenOrName) const;

    ItemKind kind_;
    CResultDocument result_;
};

}  // namespace onvifctl

#endif
