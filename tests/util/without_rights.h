// Acting as a user without rights, where the tests run as root.
#ifndef TESTS_UTIL_WITHOUT_RIGHTS_H_
#define TESTS_UTIL_WITHOUT_RIGHTS_H_

#include <unistd.h>

#include <cstdlib>

// Has no superuser's rights as long as it lives; a program that it starts never has them.
class WithoutRights {
 public:
  WithoutRights() {
    if (geteuid() == 0) changed_ = setresuid(kNobody, kNobody, 0) == 0;
  }
  ~WithoutRights() {
    if (changed_ && setresuid(0, 0, 0) != 0) std::abort();
  }
  WithoutRights(const WithoutRights &) = delete;
  WithoutRights &operator=(const WithoutRights &) = delete;

 private:
  static constexpr uid_t kNobody = 65534;

  bool changed_ = false;
};

#endif  // TESTS_UTIL_WITHOUT_RIGHTS_H_
