#ifndef EDITION_H
#define EDITION_H

#include "source.h"

namespace ZipDict {

/** Editions are numbered from 1. */
constexpr unsigned LastEdition = 255;

/** The places of an edition, and how many rows told them. */
struct Edition
{
    size_t rows = 0;
    std::vector<Place> places;
};

/** Reads the files of an edition. What could not be used is told on standard error. There are no places when
 * one of the files has no row that can be used: an edition without it would lack all its codes.
 * @param businesses empty: without businesses that have codes of their own */
[[nodiscard]] Edition readEdition(const std::string &places, const std::string &businesses,
                                  const Progress &progress);

} // namespace ZipDict

#endif
