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

constexpr int kBadRequest = 400, kUnauthorized = 401, kForbidden = 403, kNotFound = 404, kConflict = 409,
              kLengthRequired = 411, kTooLarge = 413, kNotRenderable = 422, kTooMany = 429;

} // namespace zol::studio
