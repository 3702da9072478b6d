// What the handles of one kind answer.
#pragma once

namespace orxGenApi {

// Specialised beside each class that exports resolve handles to:
//   using Interface       the class whose address the container answers
//   static uint64_t id()  the interface id
//   kInvalid              the text for an invalid handle
template <class Object>
struct HandleKind;

}  // namespace orxGenApi
