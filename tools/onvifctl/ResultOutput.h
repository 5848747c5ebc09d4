/// @file
/// What the requests of a subcommand brought, in the format that was asked for.
#ifndef ONVIFCTL_RESULTOUTPUT_H
#define ONVIFCTL_RESULTOUTPUT_H

#include <functional>
#include <string>

#include "CommandLine.h"
#include "documents/JsonResults.h"

namespace onvifctl {

/// Shows results as they come; JSON is one line, once all of them are there.
class CResultOutput {
 public:
    CResultOutput(const Session& session, Format format);

    /// Sends a request and shows the result; tells what the device refused, or that it failed.
    ExitCode Show(const std::string& request);

    /// Sends a request whose result somebody else shows, but for JSON. Throws CFailure when the
    /// device refuses a part of it.
    std::string Ask(const std::string& request);

    /// Shows a text of the subcommand's own, or in JSON nothing: the results tell as much.
    void Write(const std::string& text) const;

    /// A device did not do what it said: @p command has failed. Throws CFailure.
    [[noreturn]] void Fail(const std::string& command, const std::string& reason);

    /// The device, for questions whose results are nobody's business.
    const Session& Asked() const { return session_; }

    /// Writes the line of JSON.
    void Finish() const;

 private:
    const Session& session_;
    Format format_;
    CJsonResults results_;
};

/// Acts at a device and shows; what came before a failure is shown in JSON, too.
/// @return what @p act does.
ExitCode ShowResults(const Session& session, Format format,
                     const std::function<ExitCode(CResultOutput& output)>& act);

/// The same behind a login at the command line's one device.
void WithResults(const CommandLine& line, const std::function<void(CResultOutput& output)>& act);

/// Shows a few Get commands as tables, each asked by itself: beside one that the device does not
/// answer stands the reason.
ExitCode ShowStations(const Session& session, const std::vector<std::string>& commands);

}  // namespace onvifctl

#endif
