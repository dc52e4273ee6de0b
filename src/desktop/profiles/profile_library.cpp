#include "desktop/profiles/profile_library.h"

#include "desktop/system/module.h"

namespace pelvan::desktop {

MadeProfileWindow make_profile_window(const QString& directory, const ProfileParts& parts) {
    const ModuleEntry entry = find_in_module(directory, "libpelvan7_profiles", kProfileFunction);
    if (entry.address == nullptr) return {{}, entry.error};
    return {reinterpret_cast<ProfileFunction>(entry.address)(parts), {}};
}

} // namespace pelvan::desktop
