// What is to be edited, as the command line says.

#ifndef H265TOOL_EDIT_REQUEST_H
#define H265TOOL_EDIT_REQUEST_H

#include <cstdint>
#include <optional>

#include "edit.h"
#include "edit/aspect_ratio.h"
#include "edit/hrd_fields.h"

namespace h265tool {

struct PictureSize {
    uint32_t width;
    uint32_t height;
};

struct CropWindow {  // in luma samples
    uint32_t left;
    uint32_t right;
    uint32_t top;
    uint32_t bottom;
};

struct ColourDescription {
    unsigned char colour_primaries;
    unsigned char transfer_characteristics;
    unsigned char matrix_coeffs;
};

struct TimingInfo {
    uint32_t num_units_in_tick;
    uint32_t time_scale;
};

struct EditRequest {
    bool interlaced = false;
    bool field_seq = false;
    std::optional<PictureSize> size;
    std::optional<CropWindow> crop;
    std::optional<AspectRatio> aspect_ratio;
    std::optional<ColourDescription> colour;
    std::optional<bool> full_range;
    std::optional<TimingInfo> timing;
    std::optional<HrdFields> hrd;
    std::optional<unsigned char> pic_struct;

    bool ChangesVui() const;
    bool ChangesSps() const;

    // SEI messages are looked at: they are changed, or their syntax may depend on what is.
    bool ConcernsSei() const;
};

// Reads the HRD file too. Throws UsageError.
EditRequest MakeEditRequest(const EditOptions &options);

}  // namespace h265tool

#endif
