// Records for calls that need one: filled beforehand, then parsed.

#ifndef TESTS_ENTRY_POINTS_PARSED_RECORDS_H
#define TESTS_ENTRY_POINTS_PARSED_RECORDS_H

#include "entry_points/call.h"
#include "h265.h"

namespace test {

// NAL units with much in them.
const Bytes &VpsNal();
const Bytes &SpsNal();
const Bytes &PpsNal();

// A stream of fields: its SPS, and one of its picture timing messages.
const Bytes &FieldSpsNal();
const Bytes &FieldPicTimingNal();

// What another function takes from the caller's record although no element set it, as the headers say:
// sets that to what a conforming stream wants. A record that holds anything needs this before it is parsed
// into.
void Prepare(vps_h265_t *vps);
void Prepare(sps_h265_t *sps);
void Prepare(pps_h265_t *pps);

std::shared_ptr<vps_h265_t> ParsedVps(Fill fill, const Bytes &nal = VpsNal());
std::shared_ptr<sps_h265_t> ParsedSpsRecord(Fill fill, const Bytes &nal = SpsNal());
std::shared_ptr<pps_h265_t> ParsedPps(Fill fill, const Bytes &nal = PpsNal());

}  // namespace test

#endif
