#pragma once

#include "accounts.h"
#include "form_data.h"
#include "instances.h"

#include <string>
#include <utility>
#include <vector>

namespace tarnwick {

// What the creation form asks for, and each fault in it as (field, sentence), in the order of the form.
struct InstanceForm
{
    Instance wanted;
    std::vector<std::pair<std::string, std::string>> faults;
};

InstanceForm readInstanceForm(const FormData& form, const std::vector<Core>& cores);

} // namespace tarnwick
