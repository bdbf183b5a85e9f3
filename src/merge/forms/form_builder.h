// Makes the tree of a text from its pieces, and finds what is wrong with its forms.
#pragma once

#include <cstddef>
#include <vector>

#include "merge/forms/form_pieces.h"
#include "merge/forms/form_tree.h"
#include "merge/template_forms.h"

namespace tenora {

// Findings are added without their head. `codes` gets the offsets of the codes that are forms.
FormTree BuildForms(const FormPieces& pieces, TemplateKind kind, std::vector<FormFinding>* findings,
                    std::vector<std::size_t>* codes);

// The names that <<Each …>> takes in a kind of template, at its top or in a tenancy.
std::vector<std::string_view> CollectionNames(TemplateKind kind);

}  // namespace tenora
