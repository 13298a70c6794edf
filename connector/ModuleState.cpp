// How many objects of the module and how many server locks are alive.
#include <atomic>

#include "connector/Module.h"

namespace kitra::connector {
namespace {
std::atomic<long> g_objects{0};
std::atomic<long> g_locks{0};
}  // namespace

void ObjectCreated() { ++g_objects; }
void ObjectDestroyed() { --g_objects; }
void ServerLocked() { ++g_locks; }
void ServerUnlocked() { --g_locks; }
bool CanUnload() { return g_objects.load() == 0 && g_locks.load() == 0; }


}  // namespace kitra::connector
