#include "launcher/offer/stick_walk.h"

#include "frame/app_paths.h"

StickManifest findStickManifest() {
    return readStickManifest(AppPaths::findUsbManifest());
}
