#pragma once

#include <Varnex/hub/LostReason.h>
#include <Varnex/hub/SendCounters.h>
#include <Varnex/hub/SendPolicy.h>
#include <Varnex/transport/Sender.h>

#include <Zendro/Mutex.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <list>
#include <memory>
#include <vector>

namespace Varnex {

class Communicator;
class ConnectionMonitor;
class SendWriter;

/// Many connections as one: what is sent goes to all of them, and one consumer thread is told which has data.
///
/// A thread for each connection waits for its data. The consumer's loop: `waitForCommunicators`; if true,
/// `receiveCommunicator(c)`; read from `c` what waits there; again. Its next call hands `c` back, from then on it must
/// not read from it. `HubReader` is that loop with everything that can go wrong.
///
/// The hub owns its connections until they are removed. The peer's end counts as data: it is reported again each time
/// until the consumer removes the connection. Nothing throws, and nothing here prints.
///
/// Any thread may send, add and break the wait. Whoever removes, drops or closes is the consumer, or knows that the
/// consumer is in `waitForCommunicators`: nobody may be reading from the connection. docs/hub.md has the whole table.
class VARNEX_API MultiCommunicator : public Sender {
public:
    class CommThread;

    MultiCommunicator();

    // The order of the virtual operations is binary interface: append, never reorder.

    /// Closes first.
    ~MultiCommunicator() override;

    /// Stops watching, deletes all connections and waiting messages, and returns true. A pending `breakWait` stays.
    bool close() override;

    /// Sends to every connection in the order they were added, also after a failure; false when one failed. `length`
    /// becomes the smallest number of bytes that one took. Broadcasts never interleave; by the policy `Block`, a
    /// connection that takes nothing holds up everything that adds, removes, sends or closes.
    bool send(const void* data, int& length) override;
    /// Joins the chunks to one message.
    bool send(const Chunk* chunks, int count, int& length) override;
    [[nodiscard]] bool keepsMessages() const override { return true; }

    /// Makes what watches and feeds one connection; the hub owns it. Called with the list of connections locked:
    /// overrides only construct.
    virtual CommThread* createCommThread(MultiCommunicator* owner, Communicator* connection);

    /// Takes ownership and begins to watch. Overrides may refuse with false, the base never does.
    virtual bool addCommunicator(Communicator* connection);

    /// Stops watching and gives the ownership back, neither closing nor deleting; nothing when it is not there.
    virtual void removeCommunicator(Communicator* connection);

    /// True; the base has nothing to open.
    virtual bool open();

    /// Waits for a connection with data, whatever `breakWait` says. Always true.
    virtual bool receiveCommunicator(Communicator*& connection);

    /// Waits until a connection has data: true; false when `breakWait` ended it, the present wait or the next.
    virtual bool waitForCommunicators();

    virtual void breakWait();

    /// How many connections have data now; never waits. Always true.
    virtual bool communicatorsAvail(int& count);

    /// Sends to one connection by its policy, false also when it is not there. With `SendPolicy::Queue` nobody else may
    /// send on the connection itself.
    bool sendTo(const Communicator* connection, const void* data, int& length);
    /// Sends to all but one, such as the one that the message came from.
    bool sendToOthers(const Communicator* except, const void* data, int& length);

    /// For connections added from now on. `Queue` needs a `NonBlockingSender`, which all connections of this library
    /// are; others keep `Block`.
    void setSendPolicy(const SendPolicy& policy);

    /// Waits until nothing waits in any queue, at most `ms` milliseconds; false when the time runs out.
    bool flush(int ms);

    struct ConnectionStatus {
        Communicator* connection = nullptr;  ///< to compare with; it may be gone by now
        unsigned long long number = 0;       ///< differs for all connections that the hub ever had
        SendCounters counters;
    };
    [[nodiscard]] std::vector<ConnectionStatus> getStatus() const;
    [[nodiscard]] int getCount() const;

    /// The number of the connection handed out last, 0 when none is. Consumer only.
    [[nodiscard]] unsigned long long getCurrentNumber() const;

    /// Removes and deletes a connection, which is then lost for the given reason. False when it is not there: somebody
    /// else has removed it and it is theirs.
    bool dropCommunicator(Communicator* connection, LostReason reason = LostReason::Dropped);

    /// The same by the number, which is never given to another connection.
    bool dropNumber(unsigned long long number, LostReason reason = LostReason::Dropped);

    // The settings below are for the time before the first connection. The callbacks run one after the other on a
    // thread of the hub that holds no lock. They may call everything but `close`, and must not delete the hub. What
    // they throw is printed.

    /// Removes and deletes a lost connection at once, without reporting its end to the consumer. Only the hub deletes
    /// then: the application calls `dropCommunicator`. Off at first.
    void setDeleteLost(bool on);

    using ConnectedCallback = std::function<void(Communicator*)>;
    using LostCallback = std::function<void(Communicator*, LostReason)>;

    /// After a connection was added. It may be lost, or removed by the application, by then.
    void setConnectedCallback(ConnectedCallback callback);

    /// Once for each lost connection; not for those that `removeCommunicator` and `close` take away. By `setDeleteLost`
    /// and by `dropCommunicator` the connection is deleted after the call; otherwise it is only to compare with.
    void setLostCallback(LostCallback callback);

protected:
    /// Is told of each connection that `setDeleteLost` or `dropCommunicator` has taken out, before it is lost.
    void setDetachedHook(std::function<void(Communicator*)> hook);

    /// Like `removeCommunicator`; false when the connection is not there.
    bool detach(const Communicator* connection) VARNEX_EXCLUDES(listMutex_);

private:
    friend class ConnectionMonitor;

    using Connections = std::list<CommThread*>;

    struct Detached {
        Communicator* connection = nullptr;
        unsigned long long number = 0;
        bool wasLost = false;
    };
    Connections::iterator find(const Communicator* connection) VARNEX_REQUIRES(listMutex_);
    Connections::iterator find(unsigned long long number) VARNEX_REQUIRES(listMutex_);
    Detached take(Connections::iterator place) VARNEX_REQUIRES(listMutex_);
    bool give(const Detached& taken, LostReason reason) VARNEX_EXCLUDES(listMutex_);
    template <class Selects>
    bool sendToSelected(Selects selects, const void* data, int& length) VARNEX_EXCLUDES(listMutex_);
    void stopAll() VARNEX_REQUIRES(listMutex_);

    // For `CommThread`.
    bool report(CommThread& thread) VARNEX_EXCLUDES(queueMutex_);
    void unqueue(CommThread& thread) VARNEX_REQUIRES(queueMutex_);
    bool reportIfAtEnd(CommThread& thread);
    void reportLost(CommThread& thread, LostReason reason);
    void handBack() VARNEX_REQUIRES(queueMutex_);

    // For `ConnectionMonitor`.
    bool detachLost(unsigned long long number, LostReason reason) VARNEX_EXCLUDES(listMutex_);

    bool startWriter();

    // Lock order: listMutex_ before queueMutex_.
    mutable Zendro::Mutex listMutex_ VARNEX_ACQUIRED_BEFORE(queueMutex_);
    std::atomic<int> changers_ = 0;  // threads that wait for listMutex_ to change the list
    Connections commThreads_ VARNEX_GUARDED_BY(listMutex_);
    std::atomic<unsigned long long> lastNumber_ = 0;
    SendPolicy policy_;  // set under listMutex_
    bool closing_ VARNEX_GUARDED_BY(listMutex_) = false;

    mutable Zendro::Mutex queueMutex_;
    Connections readyQueue_ VARNEX_GUARDED_BY(queueMutex_);
    CommThread* currentThread_ VARNEX_GUARDED_BY(queueMutex_) = nullptr;
    bool breakFlag_ VARNEX_GUARDED_BY(queueMutex_) = false;
    std::condition_variable_any readyChanged_;  // queue not empty, or break flag set
    std::condition_variable_any threadEnded_;

    std::atomic<bool> deleteLost_ = false;
    std::function<void(Communicator*)> detachedHook_;
    std::unique_ptr<ConnectionMonitor> monitor_;
    std::unique_ptr<SendWriter> writer_;
};

}  // namespace Varnex
