#include "platform/linux/process/file_writer.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <utility>

namespace quillorbit::linux_adapter {

FileWriter::FileWriter(Judge oldFile, std::chrono::milliseconds mostWait)
    : m_oldFile(std::move(oldFile)), m_mostWait(mostWait) {}

void FileWriter::Finish() {
  if (!m_thread.joinable()) return;
  {
    const std::lock_guard lock(m_mutex);
    m_bEnding = true;
  }
  m_news.notify_one();
  m_thread.join();
  m_bEnding = false;
}

void FileWriter::Write(const std::string& sPath, std::string sContent) {
  if (!m_thread.joinable()) Start();
  Job job{sPath, std::move(sContent), {}};
  std::future<void> begun = job.begun.get_future();
  {
    const std::lock_guard lock(m_mutex);
    const bool bBusy = m_job.has_value();
    std::erase_if(m_waitingJobs, [&](const Job& waiting) { return waiting.sPath == sPath; });
    m_waitingJobs.push_back(std::move(job));
    if (bBusy) return;
  }
  m_news.notify_one();
  if (begun.wait_for(m_mostWait) == std::future_status::ready) begun.get();
}

std::optional<std::string> FileWriter::Unwritten(const std::string& sPath) const {
  const std::lock_guard lock(m_mutex);
  for (const Job& job : m_waitingJobs)
    if (job.sPath == sPath) return job.sContent;
  if (m_job && m_job->sPath == sPath) return m_job->sContent;
  return std::nullopt;
}

void FileWriter::Start() {
  sigset_t all, before;  // no signal of the program's is for this thread
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  try {
    m_thread = std::thread([this] { Run(); });
  } catch (...) {
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    throw;
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void FileWriter::Run() {
  std::unique_lock lock(m_mutex);
  for (;;) {
    m_news.wait(lock, [this] { return !m_waitingJobs.empty() || m_bEnding; });
    if (m_waitingJobs.empty()) return;
    m_job = std::move(m_waitingJobs.front());
    m_waitingJobs.erase(m_waitingJobs.begin());
    lock.unlock();
    const std::exception_ptr refusal = Do(*m_job);
    lock.lock();
    std::promise<void> begun = std::move(m_job->begun);
    m_job.reset();
    if (refusal) begun.set_exception(refusal);  // last, for the answer to it may be another Write
  }
}

std::exception_ptr FileWriter::Do(Job& job) const {
  bool bBegun = false;
  try {
    FileReplacement file(job.sPath);
    job.begun.set_value();
    bBegun = true;
    file.Replace(job.sContent, m_oldFile(job.sPath));
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "quillorbit: %s cannot be written (%s)\n", job.sPath.c_str(),
                 failure.what());
    if (!bBegun) return std::current_exception();
  }
  return nullptr;
}

}  // namespace quillorbit::linux_adapter
