#include "ResultOutput.h"

#include "documents/RequestDocument.h"
#include "documents/ResultDocument.h"
#include "documents/ResultTable.h"
#include "output/Printable.h"

namespace onvifctl {

CResultOutput::CResultOutput(const Session& session, Format format)
    : session_(session), format_(format), results_(session.options.name) {}

ExitCode CResultOutput::Show(const std::string& request) {
    std::string result;
    try {
        result = session_.connection.Send(request);
        if (format_ != Format::kXml && RootOf(result).empty()) {
            throw CFailure(ExitCode::kRefused, "the answer is no result document");
        }
    } catch (const CFailure& failure) {
        if (failure.Code() != ExitCode::kRefused) {
            throw;
        }
        results_.AddFailure(request, failure.what());
        Tell(failure.what());
        return failure.Code();
    }
    results_.Add(request, result);
    Write(format_ == Format::kTable ? FormatTable(result) : result);
    const auto refusals = Refusals(result);
    for (const std::string& refusal : refusals) {
        Tell(refusal);
    }
    return refusals.empty() ? ExitCode::kDone : ExitCode::kRefused;
}

std::string CResultOutput::Ask(const std::string& request) {
    std::string result;
    try {
        result = session_.connection.Send(request);
    } catch (const CFailure& failure) {
        results_.AddFailure(request, failure.what());
        throw;
    }
    results_.Add(request, result);
    if (const auto refusals = Refusals(result); !refusals.empty()) {
        throw CFailure(ExitCode::kRefused, refusals.front());
    }
    return result;
}

void CResultOutput::Write(const std::string& text) const {
    if (format_ != Format::kJson) {
        session_.output.Write(text);
    }
}

void CResultOutput::Fail(const std::string& command, const std::string& reason) {
    results_.Fail(command, reason);
    throw CFailure(ExitCode::kRefused, reason);
}

void CResultOutput::Finish() const {
    if (format_ == Format::kJson) {
        session_.output.Write(results_.Line());
    }
}

ExitCode ShowResults(const Session& session, Format format,
                     const std::function<ExitCode(CResultOutput& output)>& act) {
    CResultOutput output(session, format);
    ExitCode code = ExitCode::kDone;
    try {
        code = act(output);
    } catch (const CFailure&) {
        output.Finish();
        throw;
    }
    output.Finish();
    return code;
}

void WithResults(const CommandLine& line, const std::function<void(CResultOutput& output)>& act) {
    ShowResults(Session(line.connection), line.format, [&act](CResultOutput& output) {
        act(output);
        return ExitCode::kDone;
    });
}

namespace {

/// Why a station shows nothing, or not everything; empty when it does.
std::string ReasonIn(const std::string& result, const std::string& command) {
    const auto refusals = Refusals(result);
    const std::string reason = refusals.empty() ? "" : refusals.front();
    const std::string start = command + ": ";
    return reason.starts_with(start) ? reason.substr(start.size()) : reason;
}

ExitCode ShowStation(const Session& session, const std::string& command) {
    std::string table;
    std::string reason;
    try {
        const std::string result = session.connection.Send(MakeRequest("Get", {command}));
        reason = ReasonIn(result, command);
        const CResultDocument document(result);
        const auto* element = document.Command(command.c_str());
        if (element == nullptr) {
            reason = "the device does not tell";
        } else if (TextAt(element, "status") != "fail") {
            table = FormatTable(result);
        }
    } catch (const CFailure& failure) {
        if (failure.Code() != ExitCode::kRefused) {
            throw;
        }
        reason = failure.what();
    }
    session.output.Write(table);
    if (!reason.empty()) {
        session.output.Write((table.empty() ? command : "") +
                             "  not available: " + Printable(reason) + "\n");
    }
    return reason.empty() ? ExitCode::kDone : ExitCode::kRefused;
}

}  // namespace

ExitCode ShowStations(const Session& session, const std::vector<std::string>& commands) {
    ExitCode worst = ExitCode::kDone;
    for (std::size_t i = 0; i < commands.size(); ++i) {
        session.output.Write(i == 0 ? "" : "\n");
        worst = Worse(worst, ShowStation(session, commands[i]));
    }
    return worst;
}

}  // namespace onvifctl
