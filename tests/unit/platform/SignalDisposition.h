#pragma once

#include <csignal>

/// Sets what a signal does in this process while the object lives.
class SignalDisposition {
  public:
    SignalDisposition(int signal, void (*handler)(int)) : signal_(signal) {
        struct sigaction action {};
        action.sa_handler = handler;
        ::sigaction(signal_, &action, &before_);
    }
    ~SignalDisposition() { ::sigaction(signal_, &before_, nullptr); }
    SignalDisposition(SignalDisposition const &) = delete;
    SignalDisposition &operator=(SignalDisposition const &) = delete;

  private:
    int signal_;
    struct sigaction before_ {};
};

/// Blocks every signal in this thread while the object lives, as in the framework's worker threads.
class BlockedSignals {
  public:
    BlockedSignals() {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~BlockedSignals() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    BlockedSignals(BlockedSignals const &) = delete;
    BlockedSignals &operator=(BlockedSignals const &) = delete;

  private:
    sigset_t before_{};
};
