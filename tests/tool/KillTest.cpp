// Killed at any moment, the tool leaves the old file or the new one: it is stopped before each call to the kernel that
// can change a file, for each of them in turn, and killed there.
#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "ToolRun.h"

namespace {

bool changesFiles(const user_regs_struct& registers) {
  switch (registers.orig_rax) {
    case SYS_openat: return (registers.rdx & (O_WRONLY | O_RDWR | O_CREAT | O_TRUNC)) != 0;
    case SYS_write:
    case SYS_writev:
    case SYS_pwrite64:
    case SYS_ftruncate:
    case SYS_fsync:
    case SYS_fchmod:
    case SYS_rename:
    case SYS_renameat:
    case SYS_renameat2:
    case SYS_unlink:
    case SYS_unlinkat:
    case SYS_exit_group: return true;
    default: return false;
  }
}

enum class End { kKilled, kBySelf, kNotTraced };

// Runs the tool up to its n-th call that can change a file, counted from 1.
End killedAt(int n, std::vector<std::string> command) {
  const pid_t child = fork();
  if (child == 0) {
    std::vector<char*> words;
    for (std::string& word : command) words.push_back(word.data());
    words.push_back(nullptr);
    const int nothing = open("/dev/null", O_RDWR);
    for (const int stream : {0, 1, 2}) dup2(nothing, stream);
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(126);
    execv(words[0], words.data());
    _exit(127);
  }
  int status = 0;
  if (waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) return End::kNotTraced;
  bool entering = true;
  for (;;) {
    if (ptrace(PTRACE_SYSCALL, child, nullptr, nullptr) != 0) return End::kNotTraced;
    if (waitpid(child, &status, 0) != child) return End::kNotTraced;
    if (!WIFSTOPPED(status)) return End::kBySelf;
    user_regs_struct registers{};
    if (ptrace(PTRACE_GETREGS, child, nullptr, &registers) != 0) return End::kNotTraced;
    if (entering && changesFiles(registers) && --n == 0) {
      kill(child, SIGKILL);
      waitpid(child, &status, 0);
      return End::kKilled;
    }
    entering = !entering;
  }
}

class Killed : public ToolTest {};

TEST_F(Killed, SavingAndDownloadingLeaveTheOldOrTheNewFile) {
  const char* const build = std::getenv("OX_BUILD_DIR");
  ASSERT_NE(build, nullptr);
  const std::string tool = std::string(build) + "/bin/oxgenapi";
  const std::string state = path("camera.state");
  const std::string content(20'000, 'u');
  ASSERT_EQ(run({"--state", state, "files", "put", "UserFile1", write("content", content)}).status, 0);
  ASSERT_EQ(run({"--state", state, "set", "Width=640"}).status, 0);
  const std::string stateBefore = read("camera.state");

  const struct {
    std::vector<std::string> arguments;
    std::string result;
  } cases[] = {{{"save", path("target"), "--features", "Width"}, "Width = \"640\"\n"},
               {{"files", "get", "UserFile1", path("target")}, content}};
  for (const auto& c : cases) {
    std::vector<std::string> command{tool, "--state", state};
    command.insert(command.end(), c.arguments.begin(), c.arguments.end());
    int olds = 0, news = 0;
    for (int n = 1;; ++n) {
      write("target", "; older\n");
      const End end = killedAt(n, command);
      if (end == End::kNotTraced) GTEST_SKIP() << "no process may be traced here";
      const std::string left = read("target");
      ASSERT_TRUE(left == "; older\n" || left == c.result)
          << c.arguments[0] << " killed at call " << n << " left " << left.size() << " bytes";
      ++(left == c.result ? news : olds);
      // The camera's own memory is such a file too.
      ASSERT_EQ(read("camera.state").size(), stateBefore.size()) << n;
      if (end == End::kBySelf) break;
      ASSERT_LT(n, 1000);
    }
    EXPECT_GT(olds, 3);  // before the file is there, while it is written
    EXPECT_GT(news, 1);
  }
}

}  // namespace
