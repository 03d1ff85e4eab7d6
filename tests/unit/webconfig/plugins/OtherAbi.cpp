// A plug-in built with the headers of another interface, as far as the loader can tell.

extern "C" void webconfig_plugin_abi_0();

extern "C" void *create_webconfig_plugin() {
    webconfig_plugin_abi_0();
    return nullptr;
}
