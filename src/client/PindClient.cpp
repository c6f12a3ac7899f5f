#include "pind/client/PindClient.h"

#include <typeinfo>

namespace {
// Plain process-wide pointers, as the host's contract says: install during start-up.
IPindClient* g_pClient = nullptr;
IPindDebug* g_pDebug = nullptr;

// Only the library's own default (its exact dynamic type) is destroyed on replacement; a host's
// object, even one derived from the default, belongs to the host.
template <typename Base, typename Default>
void ReleaseIfDefault(Base*& current) {
    if (current != nullptr && typeid(*current) == typeid(Default)) {
        delete current;
    }
    current = nullptr;
}
}  // namespace

IPindClient::~IPindClient() = default;
IPindClientNone::~IPindClientNone() = default;
IPindDebug::~IPindDebug() = default;
IPindDebugNone::~IPindDebugNone() = default;

IPindClient* GetClient() {
    if (g_pClient == nullptr) {
        g_pClient = new IPindClientNone();
    }
    return g_pClient;
}

IPindClient* SetClient(IPindClient* client) {
    ReleaseIfDefault<IPindClient, IPindClientNone>(g_pClient);
    g_pClient = client;
    return client;
}

IPindDebug* GetDebug() {
    if (g_pDebug == nullptr) {
        g_pDebug = new IPindDebugNone();
    }
    return g_pDebug;
}

IPindDebug* SetDebug(IPindDebug* debug) {
    ReleaseIfDefault<IPindDebug, IPindDebugNone>(g_pDebug);
    g_pDebug = debug;
    return debug;
}
