#include "platform/linux/pulse/devices.h"

#include <algorithm>

#include "platform/mutex.h"

namespace vlm::platform::pulse {
namespace {

// Sinks and sources are counted separately by the server. Above the number of the system object.
AudioDeviceID numberOf(std::uint32_t index, bool isInput) {
  return (index + 1) * 2 + (isInput ? 1 : 0);
}

struct Collection {
  Connection& connection;
  Devices devices;
};

template <class Info>
void collect(const Info* info, int last, Collection& collection, bool isInput) {
  if (last != 0) {
    collection.connection.wake();
    return;
  }
  collection.devices.push_back({numberOf(info->index, isInput), isInput, info->name,
                                info->description ? info->description : info->name,
                                info->sample_spec, info->channel_map});
}

void onSink(pa_context*, const pa_sink_info* info, int last, void* collection) {
  collect(info, last, *static_cast<Collection*>(collection), false);
}

void onSource(pa_context*, const pa_source_info* info, int last, void* collection) {
  if (last == 0 && info->monitor_of_sink != PA_INVALID_INDEX) return;
  collect(info, last, *static_cast<Collection*>(collection), true);
}

// What the server answered last, for properties that are asked for one by one.
struct Catalogue {
  Mutex mutex;
  std::shared_ptr<const Devices> devices VLM_GUARDED_BY(mutex);
};

Catalogue& catalogue() {
  static auto* const only = new Catalogue();
  return *only;
}

std::optional<Device> find(const std::shared_ptr<const Devices>& devices, AudioDeviceID number) {
  if (!devices) return std::nullopt;
  const auto device = std::ranges::find(*devices, number, &Device::number);
  return device == devices->end() ? std::nullopt : std::optional(*device);
}

}  // namespace

std::shared_ptr<const Devices> refreshDevices() {
  std::shared_ptr<Devices> devices;
  if (const auto connection = Connection::shared()) {
    const Connection::Lock lock(*connection);
    Collection collection{*connection, {}};
    if (connection->finish(
            pa_context_get_sink_info_list(connection->context(), onSink, &collection)) &&
        connection->finish(
            pa_context_get_source_info_list(connection->context(), onSource, &collection))) {
      devices = std::make_shared<Devices>(std::move(collection.devices));
    }
  }
  const MutexLock lock(catalogue().mutex);
  catalogue().devices = devices;
  return devices;
}

std::shared_ptr<const Devices> knownDevices() {
  {
    const MutexLock lock(catalogue().mutex);
    if (catalogue().devices) return catalogue().devices;
  }
  return refreshDevices();
}

std::optional<Device> deviceByNumber(AudioDeviceID number) {
  const auto device = find(knownDevices(), number);
  return device ? device : find(refreshDevices(), number);
}

std::optional<Device> defaultInput(Connection& connection) {
  const Connection::Lock lock(connection);
  Collection collection{connection, {}};
  const bool answered = connection.finish(pa_context_get_source_info_by_name(
      connection.context(), "@DEFAULT_SOURCE@", onSource, &collection));
  if (!answered || collection.devices.empty()) return std::nullopt;
  return collection.devices.front();
}

}  // namespace vlm::platform::pulse
