#include <exception>
#include <iostream>

#include "ctl/Commands.h"

int main(int argc, char *argv[]) {
    try {
        return ctl::Run(ctl::ReadOptions(argc, argv));
    } catch (ctl::Problem const &problem) {
        std::cerr << "webconfigctl: " << problem.what() << '\n';
        return problem.ExitStatus();
    } catch (std::exception const &failure) {
        std::cerr << "webconfigctl: the answer is none of ours: " << failure.what() << '\n';
        return ctl::Failed;
    }
}
