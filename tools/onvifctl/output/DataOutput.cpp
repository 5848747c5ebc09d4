#include "output/DataOutput.h"

#include "ExitCode.h"
#include "output/Printable.h"

namespace onvifctl {

void CDataOutput::Write(std::string_view text) const {
    if (isTerminal_ && collected_ == nullptr) {
        WriteToTerminal(Printable(text, Lines::kMany));
    } else {
        WriteToTerminal(text);
    }
}

void CDataOutput::WriteToTerminal(std::string_view text) const {
    if (collected_ != nullptr) {
        *collected_ += text;
    } else if (!WriteToOutput(text)) {
        throw CFailure(ExitCode::kNoOutput, "cannot write to standard output");
    }
}

}  // namespace onvifctl
