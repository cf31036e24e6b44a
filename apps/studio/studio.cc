#include "apps/studio/studio.h"

#include "apps/studio/catalogue.h"
#include "apps/studio/connection.h"
#include "apps/studio/dialog.h"
#include "apps/studio/document.h"
#include "apps/studio/guard.h"
#include "apps/studio/jobs.h"
#include "apps/studio/page.h"
#include "apps/studio/preview.h"
#include "apps/studio/reply.h"
#include "host/media/interrupt.h"
#include "host/media/writer.h"
#include "host/model/error.h"
#include "host/model/text.h"
#include "host/render/preset.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sys/socket.h>
#include <thread>

namespace zol::studio {
namespace {

using httplib::Request;
using httplib::Response;
using Json = nlohmann::json;

constexpr double kStillDuration = 5; // seconds that values can change over where no input lasts

std::string text(const Json &json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

const char *reasonFor(int status) {
  switch (status) {
  case kUnauthorized: return "Open the address that zol studio printed when it was started.";
  case kForbidden: return "This is for the studio's own page alone.";
  case kNotFound: return "There is no such thing here.";
  case kLengthRequired: return "The length of the body has to be told.";
  case kTooLarge: return "That is more than is taken at once.";
  default: return "The request makes no sense.";
  }
}

void answer(Response &response, const Json &json) { response.set_content(text(json), "application/json"); }

void refuse(Response &response, int status, const std::string &why) {
  response.status = status;
  answer(response, {{"error", why}});
}

Json bodyOf(const Request &request) {
  Json json = Json::parse(request.body, nullptr, false);
  if (!json.is_object())
    throw Refusal(kBadRequest, "the body is no JSON object");
  return json;
}

Asking askingIn(const Json &json) {
  constexpr size_t kLongestName = 64;
  const auto number = numberIn(json, "number");
  Asking asking{textIn(json, "client"), 0};
  if (asking.client.size() > kLongestName || !number || !(*number >= 0 && *number < 1e15))
    throw Refusal(kBadRequest, "a request names its client and its number");
  asking.number = static_cast<uint64_t>(*number);
  return asking;
}

uint64_t frameIn(const Json &json) {
  const double frame = numberIn(json, "frame").value_or(0);
  if (!(frame >= 0 && frame < 1e9))
    throw Refusal(kBadRequest, "\"frame\" counts from 0");
  return static_cast<uint64_t>(frame);
}

class Studio {
public:
  explicit Studio(const Options &options)
      : options_(options), library_(std::make_shared<const host::EffectLibrary>(
                               host::EffectLibrary::fileFor(options.library), options.host)),
        catalogue_(*library_), files_(options.files, options.folder), preview_(*library_),
        jobs_(library_, options.output) {
    server_.set_payload_max_length(kLargestDrop);
    server_.set_socket_options([](int socket) { // nobody else may listen there too
      const int yes = 1;
      setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    server_.set_pre_routing_handler(
        [this](const Request &request, Response &response) { return admit(request, response); });
    server_.set_post_routing_handler(
        [this](const Request &request, Response &response) { guard_.sign(request, response); });
    server_.set_error_handler([](const Request &, Response &response) {
      if (response.body.empty())
        answer(response, {{"error", reasonFor(response.status)}});
    });
    addRoutes();
  }

  void run(const std::function<void(const std::string &)> &announce) {
    const auto port = server_.bind(options_.port);
    if (!port)
      throw host::HostError("cannot listen on port " + std::to_string(options_.port.value_or(0)) +
                            "; another program may");
    guard_.setPort(*port);
    std::thread listening([this] { server_.listen_after_bind(); });
    announce(guard_.address());
    try {
      host::awaitDescriptor(-1, 0); // until a signal comes
    } catch (const host::Interrupted &) {
    }
    preview_.stop();
    server_.stop();
    listening.join();
  }

private:
  using Handler = void (Studio::*)(const Request &, Response &);

  httplib::Server::HandlerResponse admit(const Request &request, Response &response) {
    const auto status = guard_.refuses(request);
    if (!status)
      return httplib::Server::HandlerResponse::Unhandled;
    refuse(response, *status, reasonFor(*status));
    return httplib::Server::HandlerResponse::Handled;
  }

  httplib::Server::Handler guarded(Handler handler) {
    return [this, handler](const Request &request, Response &response) {
      try {
        (this->*handler)(request, response);
      } catch (const Refusal &refusal) {
        refuse(response, refusal.status, refusal.what());
      } catch (const NothingShown &nothing) {
        answer(response, {{"message", nothing.what()}});
      } catch (const Overtaken &) {
        response.status = kNoContent;
      } catch (const host::HostError &error) {
        refuse(response, kNotRenderable, error.what());
      } catch (const std::exception &error) {
        refuse(response, 500, error.what());
      }
    };
  }

  void addRoutes() {
    server_.Get("/api/state", guarded(&Studio::state));
    server_.Get("/api/effects", guarded(&Studio::effects));
    server_.Get("/api/icon/(\\d{1,6})", guarded(&Studio::icon));
    server_.Get("/api/files", guarded(&Studio::files));
    server_.Get("/api/file", guarded(&Studio::file));
    server_.Post("/api/dialog", guarded(&Studio::dialog));
    server_.Post("/api/frame", guarded(&Studio::frame));
    server_.Post("/api/sound", guarded(&Studio::sound));
    server_.Post("/api/command", guarded(&Studio::command));
    server_.Post("/api/preset", guarded(&Studio::preset));
    server_.Post("/api/render", guarded(&Studio::render));
    server_.Get("/api/render/(\\d{1,9})", guarded(&Studio::progress));
    server_.Delete("/api/render/(\\d{1,9})", guarded(&Studio::cancel));
    server_.Post(kDropPath,
                 [this](const Request &request, Response &response, const httplib::ContentReader &content) {
                   drop(request, response, content);
                 });
    server_.Get("/([a-z_]*(\\.[a-z]{1,5})?)", guarded(&Studio::page));
  }

  // ---- What there is ----

  void state(const Request &, Response &response) {
    answer(response, {{"output", jobs_.folder()}, {"folder", !options_.folder.empty()}});
  }

  void effects(const Request &, Response &response) {
    response.set_content(catalogue_.effects(), "application/json");
  }

  void icon(const Request &request, Response &response) {
    const std::string *png = catalogue_.icon(std::stoul(request.matches[1]));
    if (png == nullptr)
      throw Refusal(kNotFound, "no icon");
    response.set_content(*png, "image/png");
  }

  void files(const Request &, Response &response) { answer(response, files_.list()); }

  void file(const Request &request, Response &response) {
    answer(response, files_.describe(request.get_param_value("id")));
  }

  void drop(const Request &request, Response &response, const httplib::ContentReader &content) {
    try {
      FileStore::Drop drop(files_, request.get_param_value("name"));
      if (!content([&](const char *data, size_t size) { return drop.write(data, size); })) {
        if (response.status < kBadRequest)
          refuse(response, kTooLarge, "that is more than there is room for, or it broke off");
        return;
      }
      answer(response, files_.describe(drop.keep()));
    } catch (const Refusal &refusal) {
      refuse(response, refusal.status, refusal.what());
    }
  }

  void page(const Request &request, Response &response) {
    std::string name = request.matches[1];
    if (name.empty())
      name = "index.html";
    const char *type = contentType(name);
    if (type == nullptr)
      throw Refusal(kNotFound, "no such page");
    if (!options_.page.empty()) {
      std::ifstream stream(options_.page + '/' + name, std::ios::binary);
      if (!stream)
        throw Refusal(kNotFound, "no such page");
      response.set_content(std::string(std::istreambuf_iterator<char>(stream), {}), type);
      return;
    }
    const auto found = compiledPage().find(name);
    if (found == compiledPage().end())
      throw Refusal(kNotFound, "no such page");
    response.set_content(found->second.data(), found->second.size(), type);
  }

  // ---- A document ----

  host::RenderPlan planIn(const Json &json, NameFile name = &FileStore::path) const {
    return planOf(documentIn(json, *library_), files_, name, options_.host);
  }

  void dialog(const Request &request, Response &response) {
    const Json body = bodyOf(request);
    const Document document = documentIn(body, *library_);
    const double stage = numberIn(body, "stage").value_or(0);
    if (!(stage >= 0 && stage < static_cast<double>(document.stages.size())))
      throw Refusal(kBadRequest, "no such stage");
    const DocumentStage &chosen = document.stages[static_cast<size_t>(stage)];
    DialogEvent event;
    if (const auto edited = numberIn(body, "edited")) {
      if (!(*edited >= 0 && *edited < static_cast<double>(chosen.effect->fields.size())))
        throw Refusal(kBadRequest, "no such field");
      event.edited = static_cast<int>(*edited);
    }
    if (body.contains("selected") && body["selected"].is_array())
      for (const Json &slot : body["selected"])
        if (slot.is_number_integer() && slot >= 0 && slot < kMostListed)
          event.selected.push_back(slot);
    event.share = std::clamp(numberIn(body, "share").value_or(0), 0.0, 1.0);
    host::Timeline timeline;
    timeline.duration = document.duration.value_or(kStillDuration);
    answer(response, dialogOf(chosen, event, timeline, options_.host));
  }

  void frame(const Request &request, Response &response) {
    const Json body = bodyOf(request);
    const Document document = documentIn(body, *library_);
    const Asking asking = askingIn(body);
    if (document.stages.empty() && document.source.empty())
      throw NothingShown("Drop a picture or a clip here.");
    const auto box = sizeIn(body, "box", kLongestSide).value_or(std::pair(kLongestSide, kLongestSide));
    const auto began = std::chrono::steady_clock::now();
    Shown shown = preview_.picture(planOf(document, files_, &FileStore::path, options_.host),
                                   document.stages.empty() ? files_.path(document.source) : "", asking, box,
                                   frameIn(body));
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - began;
    const Json facts = {{"width", shown.width},
                        {"height", shown.height},
                        {"wholeWidth", shown.timeline.width},
                        {"wholeHeight", shown.timeline.height},
                        {"pixelAspect", shown.timeline.pixelAspect},
                        {"rate", shown.timeline.rate.value()},
                        {"duration", shown.timeline.duration},
                        {"frames", shown.frames},
                        {"lasts", shown.lasts},
                        {"opaque", shown.opaque},
                        {"milliseconds", took.count()}};
    response.set_header("X-Frame", text(facts));
    response.set_header("Content-Type", "application/octet-stream");
    response.body = std::move(shown.rgba);
  }

  void sound(const Request &request, Response &response) {
    const Json body = bodyOf(request);
    const Heard heard = preview_.sound(planIn(body), askingIn(body));
    response.set_content(heard.wav, "audio/wav");
  }

  /// The plan of a file that is to be written, of one frame where it holds no more.
  host::RenderPlan renderIn(const Json &body, NameFile name) const {
    host::RenderPlan plan = planIn(body, name);
    if (plan.stages.empty())
      throw Refusal(kNotRenderable, "there is no effect to render");
    plan.output = textIn(body, "output");
    plan.overwrite = body.contains("overwrite") && body["overwrite"].is_boolean() && body["overwrite"];
    if (body.contains("quality"))
      plan.quality = textIn(body, "quality");
    if (body.contains("alpha"))
      plan.alpha = textIn(body, "alpha");
    if (host::MediaWriter::isStill(plan.output)) {
      const auto frame = host::Time::frame(static_cast<double>(frameIn(body)));
      plan.frames = {frame, frame};
    }
    return plan;
  }

  void command(const Request &request, Response &response) {
    const Json body = bodyOf(request);
    const host::RenderPlan plan = renderIn(body, &FileStore::nameForCommands);
    const bool exists = !plan.overwrite && jobs_.exists(plan.output);
    answer(response, {{"command", commandOf(plan)},
                      {"preset", {{"stages", host::toJson(plan)["stages"]}}},
                      {"exists", exists}});
  }

  void preset(const Request &request, Response &response) {
    const std::vector<host::StagePlan> stages = host::planFromJson(bodyOf(request)).stages;
    if (stages.empty() || stages.size() > kMostStages)
      throw Refusal(kBadRequest, "no preset: it has no stages");
    answer(response, documentOf(stages, files_, *library_));
  }

  // ---- Renders ----

  void render(const Request &request, Response &response) {
    const Json body = bodyOf(request);
    host::RenderPlan plan = renderIn(body, &FileStore::path);
    const std::string name = plan.output;
    answer(response, {{"number", jobs_.start(std::move(plan), name)}});
  }

  void progress(const Request &request, Response &response) {
    answer(response, jobs_.state(static_cast<unsigned>(std::stoul(request.matches[1]))));
  }

  void cancel(const Request &request, Response &response) {
    jobs_.cancel(static_cast<unsigned>(std::stoul(request.matches[1])));
    answer(response, Json::object());
  }

  Options options_;
  std::shared_ptr<const host::EffectLibrary> library_;
  Catalogue catalogue_;
  FileStore files_;
  Preview preview_;
  Jobs jobs_;
  Guard guard_;
  PatientServer server_;
};

} // namespace

void run(const Options &options, const std::function<void(const std::string &)> &announce) {
  Studio(options).run(announce);
}

} // namespace zol::studio
