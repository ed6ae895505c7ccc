#include "update/files/write_out.h"

#include <fcntl.h>

void beginWritingOut(int descriptor) {
    (void)::sync_file_range(descriptor, 0, 0, SYNC_FILE_RANGE_WRITE);
}
