// The child process that reads a model file: starting it under limits, watching it, taking its result.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <span>
#include <string>

namespace lumora
{

/// Owns a file descriptor.
class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.Release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor() { Close(); }

    int Number() const { return number_; }
    bool IsOpen() const { return number_ >= 0; }
    void Close();
    int Release();

private:
    int number_ = -1;
};

/// Owns a read-only view of a whole file.
class FileView
{
public:
    FileView() = default;
    FileView(int descriptor, std::size_t size);
    FileView(FileView&& other) noexcept;
    FileView& operator=(FileView&& other) noexcept;
    ~FileView();

    std::span<const std::byte> Bytes() const { return bytes_; }

private:
    std::span<const std::byte> bytes_;
};

struct WorkerJob
{
    std::string worker; ///< path of the program
    std::string model;  ///< path of the file
    std::chrono::milliseconds timeLimit;
    std::size_t memoryLimit;
    std::function<bool(double fraction)> tick; ///< called about every 20 milliseconds; false cancels
};

enum class WorkerEnd
{
    Finished,
    Unreadable,  ///< the worker says so, in `message`
    OutOfMemory, ///< it reached its limit, or the machine's
    TimedOut,
    Cancelled,
    Crashed,    ///< a signal or a foreign exit code, told in `message`
    NotStarted, ///< told in `message`
};

struct WorkerResult
{
    WorkerEnd end = WorkerEnd::Crashed;
    std::string message; ///< the last line of the worker's standard error, or what ended it
    FileView stream;     ///< when finished: sealed, so nobody changes or cuts it any more
};

/// Runs the job to its end. No child process and no descriptor but the result's view outlives the call, whether it
/// returns or an exception of `tick` passes through.
WorkerResult RunWorker(const WorkerJob& job);

} // namespace lumora
