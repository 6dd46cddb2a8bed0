// What a host writes in C, compiled by the compilers of hosts.
#include "quenwick/runtime/quenwick_c.h"

#include <stdio.h>

static void opened(void* context, const char* arguments) {
  fprintf(context, "opened: %s\n", arguments);
}

static void post(void* context, void (*work)(void* argument), void* argument) {
  (void)context, (void)work, (void)argument;
}

static void written(void* context, int level, const char* message) {
  if (level >= QUENWICK_LOG_DEFAULT) fprintf(context, "%s\n", message);
}

int main(void) {
  const quenwick_executor executor = {.post = post};
  const quenwick_log log = {.write = written, .context = stderr};
  char* answer = NULL;
  if (!quenwick_configure("{\"bundleIdentifier\": \"com.example.shop\"}", &executor, &log, &answer)) {
    fprintf(stderr, "%s\n", answer);
    quenwick_free(answer);
    return 1;
  }
  const quenwick_callback handler = {.call = opened, .context = stdout};
  bool isStarted = quenwick_perform("startWithApiKey:deeplinkDomains:launchOptions:result:",
                                    "[\"demo-key\", [\"links.shop.example\"], null]", &handler, &answer);
  printf("%s: %s\n", quenwick_version(), answer);
  quenwick_free(answer);
  quenwick_free(quenwick_selectors());
  return isStarted && quenwick_flush(UINT32_C(5000)) && quenwick_shutdown(5000) ? 0 : 1;
}
