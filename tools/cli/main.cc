// quorvel: the command-line client of the library. "quorvel --help" lists
// the subcommands; "quorvel SUBCOMMAND --help" explains one.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "cli.h"
#include "notices.h"

CLI::App* Cli::Add(CLI::App* parent, const std::string& name, const std::string& description,
                   Runner run) {
  CLI::App* sub = parent->add_subcommand(name, description);
  sub->callback([this, run] { runner = run; });
  return sub;
}

int main(int argc, char** argv) {
  Cli cli;
  CLI::App& app = cli.app;
  app.footer(
      "Camera options may follow the subcommand and also come from QUORVEL_HOST, "
      "QUORVEL_PORT,\nQUORVEL_USER and QUORVEL_PASSWORD. Exit status: 0 success, 1 failure "
      "(the reason on\nstandard error, with the library's result code or event and its name), "
      "2 a usage error.");
  app.require_subcommand(1);
  app.fallthrough();
  app.set_version_flag("--version", "quorvel 1.0.0");

  auto* camera = "Camera";
  ConnectionOptions& c = cli.connection;
  app.add_option("--host", c.host, "camera address")->envname("QUORVEL_HOST")
      ->capture_default_str()->group(camera);
  app.add_option("--port", c.port, "camera control port")->envname("QUORVEL_PORT")
      ->check(CLI::Range(1, 65534))->group(camera);
  app.add_option("--user", c.user, "login user")->envname("QUORVEL_USER")
      ->capture_default_str()->group(camera);
  app.add_option("--password", c.password, "login password")->envname("QUORVEL_PASSWORD")
      ->group(camera);
  app.add_option("--timeout", c.timeout, "seconds to wait for the camera's answers")
      ->check(CLI::PositiveNumber)->capture_default_str()->group(camera);

  auto* logging = "Library log";
  app.add_flag("--log", cli.log.console, "print the library's debug log on the console")
      ->group(logging);
  app.add_option("--log-dir", cli.log.dir, "write the library's debug log into files in DIR")
      ->type_name("DIR")->group(logging);
  app.add_flag("--log-udp", cli.log.udp, "send the library's debug log to the UDP monitor")
      ->group(logging);

  AddDiscoverCommand(cli);
  AddStatusCommand(cli);
  AddPtzCommands(cli);
  AddSystemCommands(cli);
  AddConfigCommands(cli);
  AddTimeCommands(cli);
  AddFileCommands(cli);
  AddSnapshotCommand(cli);
  AddTalkCommand(cli);
  AddReplayCommands(cli);
  AddLiveCommand(cli);
  AddConvertCommand(cli);

  // "quorvel help [SUBCOMMAND]" is --help in other words.
  std::vector<std::string> args(argv + 1, argv + argc);
  if (!args.empty() && args[0] == "help") {
    args.erase(args.begin());
    args.push_back("--help");
  }
  std::reverse(args.begin(), args.end());  // CLI11 takes them last first
  try {
    app.parse(args);
  } catch (const CLI::ParseError& e) {
    int status = app.exit(e);
    return status == 0 ? 0 : 2;
  }
  if (!cli.runner) return 2;
  InstallInterruptHandler();
  return cli.runner();
}
