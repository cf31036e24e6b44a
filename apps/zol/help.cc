// All commands with their options; zol help, which shows them, also as a manual page.

#include "apps/zol/commands.h"
#include "apps/zol/words.h"

#include <cstdio>

namespace zol::command {
namespace {

constexpr char kVersion[] = ZOL_VERSION;

constexpr char kExamples[] = "  zol list\n"
                             "  zol show blur\n"
                             "  zol render blur -i photo.jpg -o soft.png --set Blurriness=0.05\n"
                             "  zol render mix -i a.mp4 -i b.mp4 -o dissolve.mp4\n"
                             "  zol slowmo clip.mp4 -o slow.mp4 --factor 4\n";

std::string versionText() { return std::string("zol ") + (sizeof kVersion > 1 ? kVersion : "(development)"); }

// ---- The manual page ----

/// The text as troff has it.
std::string troff(const std::string &text) {
  std::string result;
  for (const char c : text) {
    if ((c == '.' || c == '\'') && (result.empty() || result.back() == '\n'))
      result += "\\&"; // no request
    if (c == '\\')
      result += "\\e";
    else if (c == '-')
      result += "\\-";
    else
      result += c;
  }
  return result;
}

void printOption(const CLI::Option &option) {
  const std::string names = option.get_positional() ? option.get_name(true, false) : spelledNames(option);
  const std::string type = takesValue(option) && !option.get_positional() ? option.get_type_name() : "";
  std::printf(".TP\n\\fB%s\\fR%s\n%s\n", troff(names).c_str(),
              type.empty() ? "" : (" \\fI" + troff(type) + "\\fR").c_str(),
              troff(option.get_description()).c_str());
}

void printManual(const CLI::App &zol) {
  std::printf(".TH ZOL 1 \"\" \"%s\"\n.SH NAME\nzol \\- runs video and audio effects on files\n"
              ".SH SYNOPSIS\n\\fBzol\\fR \\fICOMMAND\\fR [\\fIOPTIONS\\fR]\n.SH COMMANDS\n",
              troff(versionText()).c_str());
  for (const CLI::App *command : zol.get_subcommands({})) {
    if (command->get_group().empty())
      continue;
    std::printf(".SS zol %s\n%s.\n", command->get_name().c_str(), troff(command->get_description()).c_str());
    for (const CLI::Option *option : command->get_options())
      printOption(*option);
    if (const std::string footer = command->get_footer(); !footer.empty())
      std::printf(".PP\n.nf\n%s\n.fi\n", troff(footer).c_str());
  }
  std::printf(".SH EXIT STATUS\n0 when all went well, 1 when it failed, 2 for words that make no command,\n"
              "128 and the signal's number when it was stopped. A failed render leaves nothing behind.\n"
              ".SH EXAMPLES\n.nf\n%s.fi\n",
              troff(kExamples).c_str());
}

} // namespace

std::unique_ptr<CLI::App> makeCommands() {
  auto zol = std::make_unique<CLI::App>("zol: runs video and audio effects on files.", "zol");
  zol->formatter(std::make_shared<HelpFormatter>());
  zol->require_subcommand(1);
  zol->set_version_flag("--version", versionText());
  for (const auto add : {addList, addShow, addDeclare, addRender, addJoin, addFarm, addSlowmo, addIcons,
                         addStudio, addHelp, addCompletion})
    add(*zol);
  zol->footer(std::string("Examples:\n") + kExamples + "\n`zol COMMAND --help` tells more.");
  return zol;
}

void addHelp(CLI::App &zol) {
  CLI::App *app = zol.add_subcommand("help", "This help, that of a command, or the manual page");
  const auto wanted = std::make_shared<std::string>();
  const auto manual = std::make_shared<bool>(false);
  app->add_option("command", *wanted, "The command");
  app->add_flag("--man", *manual, "All of it as a manual page: zol help --man > zol.1");
  app->callback([wanted, manual] {
    const auto commands = makeCommands(); // nothing chosen in it
    if (*manual)
      printManual(*commands);
    else if (wanted->empty())
      std::fputs(commands->help().c_str(), stdout);
    else
      std::fputs(commandNamed(*commands, *wanted).help("zol").c_str(), stdout);
  });
}

} // namespace zol::command
