/**
 * @file
 * The version of these headers, as semantic versioning has it: a program written for a version runs with any
 * later one of the same major number, which is also the number behind ".so.". The build reads the version
 * from here.
 */
#ifndef H265_VERSION_H
#define H265_VERSION_H

#define H265_VERSION_MAJOR 1 /**< changes with the binary interface */
#define H265_VERSION_MINOR 0 /**< grows with what is added */
#define H265_VERSION_PATCH 0 /**< grows with what is put right */

/** A version as one number, to compare: `#if H265_VERSION >= H265_VERSION_NUMBER(1, 2, 0)` */
#define H265_VERSION_NUMBER(major, minor, patch) ((major)*1000000 + (minor)*1000 + (patch))
/** The version of these headers, as one number. */
#define H265_VERSION H265_VERSION_NUMBER(H265_VERSION_MAJOR, H265_VERSION_MINOR, H265_VERSION_PATCH)

#endif
