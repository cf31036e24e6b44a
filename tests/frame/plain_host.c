/* A host in plain C against the border header alone: loads the library, declares, and counts. */
#include "zol.h"

#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

static int statements;
static const uint16_t word[] = {0};

static long long execute(t_ZoHostInfo *host, t_ZoHostInfo *again, const char *text) {
  ++statements;
  return host == again && text[strlen(text) - 1] == ';';
}

static const uint16_t *translate(t_ZoHostInfo *host, const char *section, const char *text) {
  return host != NULL && section != NULL && text != NULL ? word : NULL;
}

int main(int argc, char **argv) {
  t_ZoServices services;
  t_ZoHostInfo info;
  int (*declare)(t_ZoHostInfo *);
  void *library = argc == 2 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : NULL;
  if (library == NULL) {
    fprintf(stderr, "%s\n", argc == 2 ? dlerror() : "usage: plain_host LIBRARY");
    return 2;
  }
  memset(&services, 0, sizeof services);
  memset(&info, 0, sizeof info);
  services.ScriptExecuteHi = execute;
  services.TranslateW = translate;
  info.Identity = "Halvenor";
  info.Services = &services;
  *(void **)&declare = dlsym(library, "ZoDeclare");
  if (declare == NULL || declare(&info) != 1 || statements < 200)
    return 1;
  printf("%s\n", ((const char **)dlsym(library, "COMMON_STR"))[3]);
  return 0;
}
