/* What the plug-in files call: each hands over its number in plugins.inc, and from where it was called. No
 * call throws or prints. */
#pragma once

#include <frei0r.h>

#ifdef __cplusplus
extern "C" {
#endif

void zol_frei0r_plugin_info(unsigned number, f0r_plugin_info_t *info, const void *caller);
void zol_frei0r_param_info(unsigned number, f0r_param_info_t *info, int index);
f0r_instance_t zol_frei0r_construct(unsigned number, unsigned width, unsigned height, const void *caller);
void zol_frei0r_destruct(f0r_instance_t instance);
void zol_frei0r_set(f0r_instance_t instance, f0r_param_t value, int index);
void zol_frei0r_get(f0r_instance_t instance, f0r_param_t value, int index);
void zol_frei0r_update(f0r_instance_t instance, double time, const uint32_t *first, const uint32_t *second,
                       uint32_t *out);

#ifdef __cplusplus
}
#endif
