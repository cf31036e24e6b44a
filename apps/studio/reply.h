// How requests are refused.
#pragma once

#include <stdexcept>
#include <string>

namespace zol::studio {

/// A request that gets this status, with a line that says why.
struct Refusal : std::runtime_error {
  Refusal(int httpStatus, const std::string &why) : std::runtime_error(why), status(httpStatus) {}
  int status;
};

/// What is told in place of a picture or a sound: the request was right, but nothing can be rendered, such as
/// for want of an input.
struct NothingShown : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A newer request of the same client has come.
struct Overtaken {};

constexpr int kNoContent = 204;
constexpr int kBadRequest = 400, kUnauthorized = 401, kForbidden = 403, kNotFound = 404, kConflict = 409,
              kLengthRequired = 411, kTooLarge = 413, kNotRenderable = 422, kTooMany = 429;

} // namespace zol::studio
