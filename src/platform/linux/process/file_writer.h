#pragma once

#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <future>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/process/whole_file.h"

namespace quillorbit::linux_adapter {

/// Replaces files in a thread of its own, so that its user, who is one thread, does not wait for
/// the disk: each as a whole, one after the other in the order of the calls. Of contents for the
/// same path that wait to be written, only the newest is.
class FileWriter {
 public:
  /// Says what becomes of the file at that path, which is about to be replaced. Called in the
  /// writer's thread.
  using Judge = std::function<OldFile(const std::string& sPath)>;

  /// A disk is usually quick to say that there can be no such file. `mostWait` is how long Write
  /// waits for that.
  FileWriter(Judge oldFile, std::chrono::milliseconds mostWait);
  ~FileWriter() { Finish(); }
  FileWriter(const FileWriter&) = delete;
  FileWriter& operator=(const FileWriter&) = delete;

  /// Has the file replaced. Throws std::system_error when it turns out at once that it cannot be:
  /// there is no such folder, or no right to write there. While another file is being written this
  /// does not wait to find out. Every failure, early or late, is reported on the standard error and
  /// leaves the old file as it was.
  void Write(const std::string& sPath, std::string sContent);

  /// Waits until everything is written.
  void Finish();

  /// The content that the file at that path is about to have; none when it has its last one.
  [[nodiscard]] std::optional<std::string> Unwritten(const std::string& sPath) const;

 private:
  struct Job {
    std::string sPath, sContent;
    std::promise<void> begun;  ///< the new file is there, or why there is none
  };

  void Start();
  void Run();
  /// Returns why the job could not even be begun; null when it was.
  [[nodiscard]] std::exception_ptr Do(Job& job) const;

  const Judge m_oldFile;
  const std::chrono::milliseconds m_mostWait;
  mutable std::mutex m_mutex;      ///< for everything here but the thread
  std::condition_variable m_news;  ///< a job, or the end
  std::optional<Job> m_job;        ///< the one that the thread is at
  std::vector<Job> m_waitingJobs;  ///< of different paths
  bool m_bEnding = false;
  std::thread m_thread;  ///< runs from a call of Write to Finish
};

}  // namespace quillorbit::linux_adapter
