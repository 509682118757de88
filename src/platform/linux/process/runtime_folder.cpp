#include "platform/linux/process/runtime_folder.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace quillorbit::linux_adapter {
namespace {

/// In a folder that everyone can write to, the name may belong to another user, or be a link.
void MakePrivateFolder(const std::filesystem::path& folder) {
  if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST)
    throw std::system_error(errno, std::generic_category(), folder.string());
  struct stat status {};
  if (lstat(folder.c_str(), &status) != 0)
    throw std::system_error(errno, std::generic_category(), folder.string());
  if (!S_ISDIR(status.st_mode) || status.st_uid != geteuid() || (status.st_mode & 077) != 0)
    throw std::system_error(EPERM, std::generic_category(),
                            folder.string() + " is not a private folder of this user");
}

}  // namespace

std::filesystem::path RuntimeFolder() {
  if (const char* sFolder = std::getenv("XDG_RUNTIME_DIR"); sFolder != nullptr && *sFolder != '\0')
    return sFolder;
  const std::string uid = std::to_string(geteuid());
  std::filesystem::path folder = "/run/user/" + uid;
  std::error_code ignored;
  if (std::filesystem::is_directory(folder, ignored)) return folder;
  folder = "/tmp/quillorbit-" + uid;
  MakePrivateFolder(folder);
  return folder;
}

}  // namespace quillorbit::linux_adapter
