// Feeds bytes to the reader of model documents. The one available picture is "p.png".
#include "CheckModel.h"
#include "FuzzInput.h"
#include "provider/document/ModelDocument.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    JsonTape json;
    Model model;
    std::string error;
    const bool read = ParseJson({reinterpret_cast<const char*>(data), size}, json, error) &&
                      ReadModelDocument(json, PictureFolder(), model, error);
    Expect(read || !error.empty());
    if (read) {
        CheckModel(std::move(model));
    }
    return 0;
}
