/* A shop that is opened with a link and reports what its user looks at. It is told how to reach the
   service by JSON, as `quenwick_configure` takes it:
     consumer_c '{"serviceURL": URL, "trustAnchors": PEM, "home": FOLDER,
                  "connectTo": [{"toAddress": "127.0.0.1", "toPort": PORT}]}' */
#include <quenwick/runtime/quenwick_c.h>
#include <semaphore.h>
#include <stdio.h>
#include <stdlib.h>

static sem_t opened_link, enabled_events;

static void opened(void* context, const char* arguments) {
  (void)context;
  printf("opened %s\n", arguments);
  sem_post(&opened_link);
}

static void enabled(void* context, const char* arguments) {
  (void)context, (void)arguments;
  sem_post(&enabled_events);
}

static void perform(const char* selector, const char* arguments,
                    const quenwick_callback* callback) {
  char* answer;
  bool is_done = quenwick_perform(selector, arguments, callback, &answer);
  if (!is_done) fprintf(stderr, "%s\n", answer);
  quenwick_free(answer);
  if (!is_done) exit(1);
}

int main(int count, char** words) {
  if (count != 2) {
    return fprintf(stderr, "usage: consumer_c JSON, as quenwick_configure takes it\n"), 2;
  }
  sem_init(&opened_link, 0, 0);
  sem_init(&enabled_events, 0, 0);
  char* error;
  if (!quenwick_configure(words[1], NULL, NULL, &error)) {
    fprintf(stderr, "%s\n", error);
    quenwick_free(error);
    return 1;
  }
  perform("setEventsEnabledHandler:", "[]", &(quenwick_callback){.call = enabled});
  perform("startWithApiKey:deeplinkDomains:launchOptions:result:",
          "[\"demo-key\", [\"links.shop.example\"], null]", &(quenwick_callback){.call = opened});
  perform("handleUniversalLinkWithUrl:", "[\"https://links.shop.example/p/go/1f\"]", NULL);
  sem_wait(&opened_link);
  sem_wait(&enabled_events);
  perform("productViewed:", "[{\"id\": 42, \"price\": 3.5}]", NULL);
  bool is_sent = quenwick_flush(10000);
  return quenwick_shutdown(5000) && is_sent ? 0 : 1;
}
