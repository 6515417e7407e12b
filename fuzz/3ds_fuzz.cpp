// 3DS models: the whole import, then every array access the drawing makes.

#include <cstdint>
#include <cstring>

#include "assets/3ds.h"
#include "fuzzinput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static bvfuzz::MemoryFile file;
    CLoad3DS loader;
    t3DModel model;
    bool ok = loader.Import3DS(&model, file.fill(data, size));
    BVFUZZ_REQUIRE(model.numOfObjects == (int)model.pObject.size());
    BVFUZZ_REQUIRE(model.numOfMaterials == (int)model.pMaterials.size());
    if (!ok) BVFUZZ_REQUIRE(model.numOfObjects == 0 && model.numOfMaterials == 0);

    // The same walk as s3DS::draw, reading instead of drawing, so that an index
    // the import let through shows up here rather than in a player's game.
    float sink = 0;
    for (const t3DObject& object : model.pObject) {
        BVFUZZ_REQUIRE(object.materialID >= 0);
        BVFUZZ_REQUIRE(object.materialID == 0 || object.materialID < model.numOfMaterials);
        if (object.materialID < model.numOfMaterials) sink += model.pMaterials[object.materialID].color[0];
        for (int f = 0; f < object.numOfFaces; f++) {
            for (int k = 0; k < 3; k++) {
                int index = object.pFaces[f].vertIndex[k];
                BVFUZZ_REQUIRE(index >= 0 && index < object.numOfVerts);
                sink += object.pNormals[index].x + object.pVerts[index].y;
                if (object.bHasTexture && object.pTexVerts && index < object.numTexVertex)
                    sink += object.pTexVerts[index].x;
            }
        }
        BVFUZZ_REQUIRE(memchr(object.strName, 0, MAX_3DSNAME) != nullptr);
    }
    for (const tMaterialInfo& material : model.pMaterials) {
        BVFUZZ_REQUIRE(memchr(material.strName, 0, MAX_3DSNAME) != nullptr);
        BVFUZZ_REQUIRE(memchr(material.strFile, 0, MAX_3DSNAME) != nullptr);
    }
    volatile float keep = sink;
    (void)keep;
    Free3DModel(&model);
    return 0;
}
