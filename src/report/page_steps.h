// Steps, mass and histories on the page.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "odbstore/reader.h"
#include "report/page_data.h"

namespace report {

// [{name, description, mass, massCenter, inertiaAboutCenter, inertiaAboutOrigin, frames: [{number, value,
// description}]}], what a step does not have left out.
Json stepsPart(const odbstore::Reader& reader);

// {list: [{step, region, output, first, samples, x}], values, abscissae: arrays}: the values of a history are `samples`
// from `first` on, its abscissae as many from `x` on (histories with the same share them). `leftOut` counts the
// histories for which there is no room among `most` bytes.
Json historiesPart(const odbstore::Reader& reader, std::size_t most, PageData& data, std::size_t& leftOut);

}  // namespace report
