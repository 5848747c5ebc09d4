/// @file
/// What every result builder has in common.
///
/// One result document answers a whole request; each command's builder adds its own element to it
/// (ResultDocument.h). Builders differ in what a ResultFrame says; the values are copied by tables
/// (CopiedValue) wherever the device's answer maps one to one.
///
/// A value whose source is missing is left out and never turns a success into a failure; a source
/// without text gives an empty element.
#ifndef ONVIF_CLIENT_TRANSFORM_RESULTFRAME_H
#define ONVIF_CLIENT_TRANSFORM_RESULTFRAME_H

#include <string>
#include <string_view>

#include "common/FixedText.h"
#include "common/XmlDocument.h"
#include "transform/CopiedValues.h"
#include "transform/FaultReaders.h"
#include "transform/ResultDocument.h"

namespace onvif_client {

/// What a request was about, for answers that do not repeat it.
struct Subject {
    /// Position of the profile that was asked about, from 0; only for commands that ask by profile.
    int index = 0;
    /// The token of the configuration that was asked about; only for commands that show it.
    std::string token = {};
};

/// What a builder copies from.
struct ReplyValues {
    /// The root of the trimmed reply; null when the reply did not parse.
    const XMLElement* envelope;
    /// What the request was about.
    Subject subject;
};

/// Where a builder's `status` stands.
enum class StatusPlace {
    kCommand,  // in the command element
    kWrapper,  // in an element of its own below the command element (ResultFrame::statusWrapper)
    kNowhere,  // the outcome is not reported
};

/// How the names in a reply lose their prefixes.
enum class PrefixRemoval {
    kInText,      // CXmlTransform::TrimXmlNamespace
    kInDocument,  // CXmlTransform::TrimElementNames
};

enum class FaultReader { kGeneric, kWithInvalidArgument, kPullMessages };

/// One result builder.
struct ResultFrame {
    std::string_view root;     // "GetResponse", "SetResponse", ...
    std::string_view element;  // the command's element below the root
    /// Copies the values below @p command, once the fault reader reported a success; null: none.
    void (*copyValues)(const ReplyValues& reply, XMLElement* command) = nullptr;
    FaultReader faultReader = FaultReader::kGeneric;
    StatusPlace statusPlace = StatusPlace::kCommand;
    std::string_view statusWrapper = {};
    /// Not empty: the element of the SOAP body without which the answer counts as a fault.
    std::string_view response = {};
    PrefixRemoval prefixRemoval = PrefixRemoval::kInText;
};

/// The result of a command that reports nothing but its status: kStatusOnly<"dns">.
template <FixedText Element, FixedText Root = "SetResponse">
inline constexpr ResultFrame kStatusOnly = {Root, Element};

/// Adds a command's answer to the result document.
/// @param reply   the SOAP text as the device sent it.
/// @param result  what earlier commands of the request produced.
void BuildResult(const ResultFrame& frame, std::string_view reply, const Subject& subject,
                 CResultDocument& result, FaultReading reading = FaultReading::kLiteral);

}  // namespace onvif_client

#endif
