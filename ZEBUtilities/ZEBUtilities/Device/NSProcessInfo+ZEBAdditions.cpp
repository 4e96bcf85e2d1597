#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Linux/detail/ProcessFacts.h>
#include <ZEBUtilities/Device/NSProcessInfo+ZEBAdditions.h>
#include <ZEBUtilities/Device/ZEBSystemControl.h>

#include <optional>

namespace zeb {

void zeb_getVirtualMemory(const Ref<NSProcessInfo>& info, std::uint64_t* virtualMemory,
                          std::uint64_t* residentMemory,
                          std::uint64_t* residentMemoryHighWatermark) {
  const std::optional<TaskMemory> memory = info ? taskMemory() : std::nullopt;
  if (!memory) return;
  if (virtualMemory) *virtualMemory = memory->virtualSize;
  if (residentMemory) *residentMemory = memory->residentSize;
  if (residentMemoryHighWatermark) *residentMemoryHighWatermark = memory->maxResidentSize;
}

std::uint64_t zeb_virtualMemory(const Ref<NSProcessInfo>& info) {
  std::uint64_t bytes = 0;
  zeb_getVirtualMemory(info, &bytes, nullptr, nullptr);
  return bytes;
}

std::uint64_t zeb_residentMemory(const Ref<NSProcessInfo>& info) {
  std::uint64_t bytes = 0;
  zeb_getVirtualMemory(info, nullptr, &bytes, nullptr);
  return bytes;
}

std::uint64_t zeb_residentMemoryHighWatermark(const Ref<NSProcessInfo>& info) {
  std::uint64_t bytes = 0;
  zeb_getVirtualMemory(info, nullptr, nullptr, &bytes);
  return bytes;
}

std::uint64_t zeb_freePhysicalMemory(const Ref<NSProcessInfo>& info) {
  return info ? freePhysicalMemorySize() : 0;
}

NSString zeb_buildNumberString(const Ref<NSProcessInfo>& info) {
  if (!info) return nullptr;
  static const detail::NeverDestroyed<NSString> build(
      ZEBSystemControlRetrieveStringByControlType(1, 65));
  return *build;
}

}  // namespace zeb
