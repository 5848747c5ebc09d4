/// @file
/// A configuration that is sent whole: as the device has it, with what a request wants to be
/// otherwise, in the order of the schema. Tables say what belongs to it.
#ifndef ONVIF_CLIENT_COMMANDS_MERGEDVALUES_H
#define ONVIF_CLIENT_COMMANDS_MERGEDVALUES_H

#include <span>

#include "common/XmlDocument.h"

namespace onvif_client {

/// One element or attribute of a configuration.
struct MergedValue {
    /// As it is sent ("tt:Mode"); the device's is found by the name without its prefix. "@token" is
    /// an attribute.
    const char* element;
    /// Where the request says what it shall be, a path; null: nowhere, the device's value stays.
    const char* parameter = nullptr;
    /// Not empty: a group, and these are its rows, in the order of the schema. They start from what
    /// @p parameter leads to, without one from where the group's own row starts.
    std::span<const MergedValue> parts = {};
    /// What the schema requires is sent with this text when neither has it, a group also empty;
    /// null: it is left out.
    const char* otherwise = nullptr;
};

/// Appends what the rows find, in their order. Null elements give nothing.
/// @param wanted   what the request says.
/// @param present  what the device has, its names without prefixes.
void MergeValues(const XMLElement* wanted, const XMLElement* present, XMLElement* to,
                 std::span<const MergedValue> rows);

}  // namespace onvif_client

#endif
