#include <prm/prmlib.h>

struct cPrmLib::State {};
cPrmLib::cPrmLib(PRM_CLIENT_ID_T) {}
cPrmLib::~cPrmLib() = default;

// A store without a key, where all that is written is taken.
int cPrmLib::getPar(char const *, std::string &) {
    return 1;
}
int cPrmLib::getPar(char const *, int *) {
    return 1;
}
int cPrmLib::getPar(char const *, float *) {
    return 1;
}
int cPrmLib::getPar(char const *, char *) {
    return 1;
}
int cPrmLib::getPar(char const *, std::string &, PRM_PAR_T *) {
    return 1;
}
int cPrmLib::setPar(char const *, int) {
    return 0;
}
int cPrmLib::setPar(char const *, float) {
    return 0;
}
int cPrmLib::setPar(char const *, std::string const &) {
    return 0;
}
int cPrmLib::setPar(char const *, char const *) {
    return 0;
}
int cPrmLib::delPar(char const *) {
    return 1;
}
int cPrmLib::addFile(char const *, char const *, unsigned) {
    return 0;
}
int cPrmLib::getList(char const *, int) {
    return 0;
}
int cPrmLib::getNext(char *, int) {
    return 1;
}
void cPrmLib::FlushReadCache() {}
