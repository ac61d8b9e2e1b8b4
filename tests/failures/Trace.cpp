#include "tests/failures/Trace.h"

#include <fstream>
#include <regex>

#include "tests/servers/ChildProcess.h"
#include "tests/servers/HardwareProbe.h"

namespace orvane::test {
namespace {

constexpr const char *kKept =
    "trace=socket,bind,execve,execveat,open,openat,openat2,creat,mkdir,mkdirat,rmdir,unlink,"
    "unlinkat,rename,renameat,renameat2,link,linkat,symlink,symlinkat,truncate,ftruncate,"
    "fallocate,chmod,fchmod,fchmodat,chown,fchown,lchown,fchownat,mknod,mknodat,utime,utimes,"
    "utimensat,futimesat,setxattr,lsetxattr,fsetxattr,removexattr,lremovexattr,fremovexattr,mount,"
    "umount2,pivot_root,chroot,swapon,acct";

bool hasEnded(const std::string &file) {
  std::ifstream stream(file);
  std::string process;
  for (std::string line; std::getline(stream, line);) {
    if (process.empty())
      process = line.substr(0, line.find(' ') + 1);
    else if (line.starts_with(process) && line.find(" +++ ") != std::string::npos)
      return true;
  }
  return false;
}

}  // namespace

std::string Trace::whyImpossible() {
  return outputOf({"strace", "-qq", "-e", "trace=none", "true"});
}

std::vector<std::string> Trace::command(const std::vector<std::string> &words) const {
  std::vector<std::string> whole{"strace", "-D",  "-f", "-q",  "-y", "-s",         "4096",
                                 "-o",     mFile, "-e", kKept, "-e", "signal=none"};
  whole.insert(whole.end(), words.begin(), words.end());
  return whole;
}

bool Trace::read() {
  if (!eventually([this] { return hasEnded(mFile); }))
    return false;
  std::ifstream stream(mFile);
  for (std::string line; std::getline(stream, line);)
    take(line);
  return true;
}

void Trace::take(const std::string &line) {
  // "123 call(arguments…": the rest of a call that another thread interrupted is of no interest.
  static const std::regex kCall(R"(^\d+ +(\w+)\((.*)$)");
  std::smatch call;
  if (!std::regex_match(line, call, kCall))
    return;
  const std::string name = call[1];
  const std::string arguments = call[2];
  if (name == "socket") {
    mSocketFamilies.insert(arguments.substr(0, arguments.find(',')));
    return;
  }
  if (name == "bind") {
    // Sockets that have a place in the file system; those whose name begins with "@" have none.
    static const std::regex kPlace(R"re(sun_path="([^"]*)")re");
    if (std::smatch place; std::regex_search(arguments, place, kPlace))
      mChangedPaths.insert(place[1]);
    return;
  }
  static const std::regex kChanging("O_WRONLY|O_RDWR|O_CREAT|O_TRUNC|O_TMPFILE");
  if (name.starts_with("open") && !std::regex_search(arguments, kChanging))
    return;
  // Those of a file that is open already; what has no path is memory.
  static const std::set<std::string> kOfOpenFiles{"ftruncate", "fallocate", "fchmod",
                                                  "fchown",    "fsetxattr", "fremovexattr"};
  static const std::regex kOpenFile(R"(^\d+<(/[^>]*)>)");
  std::smatch file;
  if (kOfOpenFiles.contains(name) || arguments.find('"') == std::string::npos) {
    if (std::regex_search(arguments, file, kOpenFile) && !file.str(1).starts_with("/memfd:"))
      mChangedPaths.insert(file[1]);
    return;
  }
  // A path, and before it the folder that it is in when it does not begin with "/".
  static const std::regex kPath(R"re((?:<([^>]*)>, )?"([^"]*)")re");
  const bool isLink = name.find("link") != std::string::npos && !name.starts_with("unlink");
  std::vector<std::string> changed;
  for (std::sregex_iterator path(arguments.begin(), arguments.end(), kPath), end; path != end;
       ++path) {
    const std::string folder = (*path)[1];
    const std::string text = (*path)[2];
    const std::string whole = text.starts_with('/') ? text : folder + "/" + text;
    if (name.starts_with("execve")) {
      mStartedPrograms.insert(whole);
      return;  // what follows are its arguments
    }
    if (isLink)
      changed.clear();  // the first is only led to
    changed.push_back(whole);
  }
  mChangedPaths.insert(changed.begin(), changed.end());
}

}  // namespace orvane::test
