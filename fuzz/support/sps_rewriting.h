// What the rewritings of an SPS have in common, for their fuzzers: parse, edit, rewrite, parse again; every
// element is then what it was or what it was edited to.

#ifndef FUZZ_SUPPORT_SPS_REWRITING_H
#define FUZZ_SUPPORT_SPS_REWRITING_H

#include "h265.h"
#include "support/fuzz_input.h"

namespace fuzz {

struct SpsRewriting {
    BOOL (*rewrite)(const unsigned char *, unsigned int, const sps_h265_t *, unsigned char **, UINT *);
    void (*edit)(FuzzInput *input, sps_h265_t *sps);  // what the rewriting may change
    void (*expect)(sps_h265_t *sps);                  // what it changes besides
    // the data that the rewriting of an unedited record gives, from the data that went in
    Bytes (*unedited)(const Bytes &sodb, const sps_h265_t &sps);
};

void CheckSpsRewriting(const uint8_t *data, size_t size, const SpsRewriting &rewriting);

}  // namespace fuzz

#endif
