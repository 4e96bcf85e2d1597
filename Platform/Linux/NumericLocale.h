#pragma once

namespace zeb {

/// Lets the C library read and write the calling thread's numbers with a point, whatever the host's locale
/// says, as long as it lives: for outside libraries that read documents with `strtod`.
class NeutralNumbers {
 public:
  NeutralNumbers() noexcept;
  NeutralNumbers(const NeutralNumbers&) = delete;
  NeutralNumbers& operator=(const NeutralNumbers&) = delete;
  ~NeutralNumbers();

 private:
  void* before_;
};

}  // namespace zeb
