/* One plug-in file: the interface's functions for the plug-in of number ZOL_PLUGIN_NUMBER. */
#include "bridges/frei0r/core.h"

#include <stddef.h>

int f0r_init(void) { return 1; }

void f0r_deinit(void) {}

void f0r_get_plugin_info(f0r_plugin_info_t *info) {
  zol_frei0r_plugin_info(ZOL_PLUGIN_NUMBER, info, __builtin_return_address(0));
}

void f0r_get_param_info(f0r_param_info_t *info, int index) {
  zol_frei0r_param_info(ZOL_PLUGIN_NUMBER, info, index);
}

f0r_instance_t f0r_construct(unsigned int width, unsigned int height) {
  return zol_frei0r_construct(ZOL_PLUGIN_NUMBER, width, height, __builtin_return_address(0));
}

void f0r_destruct(f0r_instance_t instance) { zol_frei0r_destruct(instance); }

void f0r_set_param_value(f0r_instance_t instance, f0r_param_t value, int index) {
  zol_frei0r_set(instance, value, index);
}

void f0r_get_param_value(f0r_instance_t instance, f0r_param_t value, int index) {
  zol_frei0r_get(instance, value, index);
}

void f0r_update(f0r_instance_t instance, double time, const uint32_t *inframe, uint32_t *outframe) {
  zol_frei0r_update(instance, time, inframe, NULL, outframe);
}

void f0r_update2(f0r_instance_t instance, double time, const uint32_t *inframe1, const uint32_t *inframe2,
                 const uint32_t *inframe3, uint32_t *outframe) {
  (void)inframe3;
  zol_frei0r_update(instance, time, inframe1, inframe2, outframe);
}
