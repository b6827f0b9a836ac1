// SharedForm: the single instance of each dialog window, made on first use and kept until the program ends.
#pragma once

#include <memory>

// Called by SharedForm; `unload` destroys one form.
void RememberForm(void (*unload)());

// Destroys every form that was made, the last one first; a form asked for later is made anew. For the end of
// the program and of each test.
void UnloadForms();

template <typename Form>
Form& SharedForm() {
    static std::unique_ptr<Form> form;
    if (form == nullptr) {
        form = std::make_unique<Form>();
        RememberForm([] { form.reset(); });
    }
    return *form;
}
