#pragma once

#include <cppcms/json.h>
#include <cppcms/rpc_json.h>

#include <string>

#include "fleet/console/Conductor.h"
#include "fleet/console/Connection.h"
#include "fleet/console/Registry.h"
#include "fleet/console/Store.h"

namespace fleet::console {

/// What the console is made of, for those who serve requests.
struct Console {
    Store &store;
    Registry &registry;
    Conductor &conductor;
    Connection const &connection;
};

/// The calls of the pages, and of machines: docs/fleet.md. Each takes one object, and runs on a worker.
class Rpc : public cppcms::rpc::json_rpc_server {
  public:
    using Asked = cppcms::json::value;
    using Answer = cppcms::json::value;

    Rpc(cppcms::service &service, Console const *console);

    // What there is.
    Answer Status(Asked const &asked);
    Answer Devices(Asked const &asked);
    Answer Device(Asked const &asked);
    Answer Catalogue(Asked const &asked);
    Answer Health(Asked const &asked);
    Answer Changes(Asked const &asked);
    Answer Rollouts(Asked const &asked);
    Answer Rollout(Asked const &asked);
    Answer Members(Asked const &asked);
    Answer Discover(Asked const &asked);

    // What is done.
    Answer Change(Asked const &asked);
    Answer Tag(Asked const &asked);
    Answer Note(Asked const &asked);
    Answer Forget(Asked const &asked);
    Answer RollOut(Asked const &asked);
    Answer Pause(Asked const &asked);
    Answer GoOn(Asked const &asked);
    Answer TakeBack(Asked const &asked);
    Answer End(Asked const &asked);

  private:
    std::string _Who();
    cppcms::json::value _Shown(RolloutRow const &rollout, bool whole);
    cppcms::json::value _Shown(ChangeRow const &change, std::string const &patch);

    Console const &_console;
};

}  // namespace fleet::console
