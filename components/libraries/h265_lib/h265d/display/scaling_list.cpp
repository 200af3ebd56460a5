#include "h265d/display/show.h"
#include "h265d/display/sub_structures.h"

int _display_scaling_list_data(const scaling_list_data_t *sld) {
    ASSERT_ARGUMENT(sld != NULL);
    TRACE(kInformation, "Scaling list Data:%p parsing is NOT done at the moment.\n",
          static_cast<const void *>(sld));
    return 0;
}
