#include "system/Tool.h"

#include <signal.h>
#include <sys/wait.h>

namespace client_test {

CRunningTool::CRunningTool(const std::string& arguments, const std::string& environment,
                           const std::string& errors, const std::string& program)
    : output_(popen(  // nobody's hosts file has a say in the tests
          ("echo $$; exec env XDG_CONFIG_HOME=" + testing::TempDir() + "/none " + environment +
           " " + program + " " + arguments + " 2>" + errors)
              .c_str(),
          "r")),
      process_(std::stoi(Line())) {}

CRunningTool::~CRunningTool() {
    if (process_ != 0) {
        Signal(SIGKILL);
        Wait();
    }
}

int CRunningTool::Wait() {
    process_ = 0;
    const int status = pclose(output_);
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

bool CRunningTool::Signal(int signal) {
    return kill(static_cast<pid_t>(process_), signal) == 0;
}

}  // namespace client_test
