#include "support/per_thread.h"

#include <pthread.h>

namespace tarvik {

namespace {

pthread_once_t once = PTHREAD_ONCE_INIT;
pthread_key_t newest_end;

void act_on_all(void *newest) {
  for (auto *end = static_cast<ThreadEnd *>(newest); end != nullptr; end = end->next) end->act();
}

void make_key() { pthread_key_create(&newest_end, act_on_all); }

}  // namespace

void at_thread_end(ThreadEnd *end) noexcept {
  pthread_once(&once, make_key);
  end->next = static_cast<ThreadEnd *>(pthread_getspecific(newest_end));
  pthread_setspecific(newest_end, end);
}

}  // namespace tarvik
