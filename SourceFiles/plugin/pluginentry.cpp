// Entry of the plug-in library: the verification text that older loaders look for in the section ".qtplugin".
#include <QtGlobal>

#include "bodyadjustmentmodule.h"

// Q_PLUGIN_METADATA on the module class makes the entry itself; naming it here pulls that class out of the library.
extern "C" QObject* qt_plugin_instance();
extern "C" Q_DECL_EXPORT QObject* korvex2_module_root() { return qt_plugin_instance(); }

extern "C" {

__attribute__((section(".qtplugin"), used)) static const char qt_plugin_verification_data[] =
    "pattern=QT_PLUGIN_VERIFICATION_DATA\n"
    "version=" QT_VERSION_STR
    "\n"
    "debug=" KORVEX2_QT_DEBUG
    "\n"
    "buildkey=" KORVEX2_QT_BUILD_KEY;

Q_DECL_EXPORT const char* qt_plugin_query_verification_data() { return qt_plugin_verification_data; }

}  // extern "C"
