// The floor under every way to run many extractions: starts a program once for each line of a list, with that database
// and in a directory of its own that is there already, and waits for each.
//
//     spawn_loop LIST CONFIG DIR PROGRAM
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

int main(int argc, char** argv) {
  if (argc != 5) return 2;
  std::ifstream list(argv[1]);
  int failures = 0;
  int number = 0;
  for (std::string database; std::getline(list, database); ++number) {
    const std::string directory = std::string(argv[3]) + "/" + std::to_string(number);
    posix_spawn_file_actions_t files;
    ::posix_spawn_file_actions_init(&files);
    ::posix_spawn_file_actions_addchdir_np(&files, directory.c_str());
    ::posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "log", O_WRONLY | O_CREAT, 0666);
    ::posix_spawn_file_actions_adddup2(&files, STDOUT_FILENO, STDERR_FILENO);
    char odb[] = "-odb";
    char config[] = "-config";
    char* arguments[] = {argv[4], odb, database.data(), config, argv[2], nullptr};
    pid_t child = -1;
    int status = 1;
    if (::posix_spawn(&child, argv[4], &files, nullptr, arguments, environ) == 0) ::waitpid(child, &status, 0);
    ::posix_spawn_file_actions_destroy(&files);
    if (status != 0) ++failures;
  }
  return failures == 0 ? 0 : 1;
}
