// The border: what marks a name as part of it.
#pragma once

/// Marks a function or object that hosts may look up under its plain name. Everything else is hidden;
/// `frame/exports.map` holds the same list for the linker.
#define ZOL_EXPORT extern "C" __attribute__((visibility("default")))

/// Marks an effect's table of texts: nothing in the library reads it, and it stays in the object.
#define ZOL_TEXT_TABLE [[gnu::used]] static constexpr const char *
