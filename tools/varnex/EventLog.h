#pragma once

#include "EventFormat.h"
#include "StopWatcher.h"
#include "Summary.h"

#include <Zendro/Mutex.h>

#include <atomic>
#include <string>

namespace VarnexTool {

/// Where all connections of a listener put what they received. Any thread.
class EventLog {
public:
    struct Options {
        EventFormat format;
        bool quiet = false;
        bool summary = false;
        unsigned long long count = 0;  ///< events until it stops; 0: without end
    };

    /// The watcher outlives the log, which stops it after the last event and when the output is gone.
    EventLog(const Options& options, StopWatcher& stop) : options_(options), stop_(stop) {}

    /// Takes one event and appends its line to `lines`. False when no more are wanted.
    [[nodiscard]] bool take(const Varnex::Event& event, const std::string& peer, std::string& lines);

    /// Writes whole lines to the standard output, at once and in one piece, and empties them.
    void write(std::string& lines);

    /// One line on the error stream.
    static void note(const std::string& line);

    /// After the last connection ended: the summary, if wanted. Throws `Failure` when the output was gone.
    void finish();

private:
    const Options options_;
    StopWatcher& stop_;
    std::atomic<unsigned long long> taken_ = 0;
    std::atomic<bool> outputGone_ = false;
    Zendro::Mutex outputMutex_;
    Zendro::Mutex summaryMutex_;  // neither is locked inside the other
    Summary summary_ VARNEX_GUARDED_BY(summaryMutex_);
};

}  // namespace VarnexTool
