// The least that a FastCGI responder does: reads the request and writes as many bytes as it is told, with
// the headers of a page. What our pages are measured against.
//
//   bare_fcgi SOCKET THREADS BYTES

#include <fcgiapp.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace {

void Serve(int socket, std::string const &answer) {
    FCGX_Request request;
    FCGX_InitRequest(&request, socket, 0);
    while (FCGX_Accept_r(&request) == 0) {
        FCGX_PutStr(answer.data(), static_cast<int>(answer.size()), request.out);
        FCGX_Finish_r(&request);
    }
}

}  // namespace

int main(int argc, char *argv[]) {
    if (argc != 4) {
        std::cerr << "usage: bare_fcgi SOCKET THREADS BYTES\n";
        return 2;
    }
    FCGX_Init();
    int const socket = FCGX_OpenSocket(argv[1], 128);
    std::string const answer = "Content-Type: text/html; charset=utf-8\r\n\r\n" +
                               std::string(std::strtoul(argv[3], nullptr, 10), 'x');
    std::vector<std::thread> threads;
    for (int n = std::atoi(argv[2]); n > 0; --n)
        threads.emplace_back(Serve, socket, std::cref(answer));
    for (auto &thread : threads)
        thread.join();
}
