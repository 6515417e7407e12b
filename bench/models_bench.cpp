// How long a big model takes to load: a 100 x 100 grid of quads, 20,000 faces
// sharing 10,201 vertices, read and given its normals. For comparison, the
// normals alone the old way, scanning every face for every vertex.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "assets/3ds.h"
#include "writers/writer3ds.h"

namespace {

const int SIDE = 100;

std::string gridFile() {
    static std::string path;
    if (!path.empty()) return path;
    writer3ds::Model m;
    int grass = m.material("Grass", 40, 160, 50, "grass.tga");
    writer3ds::Object& o = m.object("Terrain", grass);
    for (int y = 0; y <= SIDE; y++)
        for (int x = 0; x <= SIDE; x++)
            o.vertex((float)x, (float)y, 0.5f * std::sin(x * 0.3f) * std::cos(y * 0.2f), x / (float)SIDE,
                     y / (float)SIDE);
    for (int y = 0; y < SIDE; y++)
        for (int x = 0; x < SIDE; x++) {
            uint16_t a = (uint16_t)(y * (SIDE + 1) + x);
            o.quad(a, (uint16_t)(a + 1), (uint16_t)(a + SIDE + 2), (uint16_t)(a + SIDE + 1));
        }
    char templ[] = "/tmp/brontevalle-bench-XXXXXX";
    int fd = mkstemp(templ);
    if (fd >= 0) close(fd);
    path = templ;
    if (!writer3ds::write3DS(m, path)) abort();
    return path;
}

void BM_Import3DS_20000Faces(benchmark::State& state) {
    std::string path = gridFile();
    for (auto _ : state) {
        t3DModel model;
        CLoad3DS reader;
        if (!reader.Import3DS(&model, path.c_str())) state.SkipWithError("import failed");
        benchmark::DoNotOptimize(model.pObject[0].pNormals);
        Free3DModel(&model);
    }
    state.counters["faces"] = SIDE * SIDE * 2;
}
BENCHMARK(BM_Import3DS_20000Faces)->Unit(benchmark::kMillisecond);

void BM_VertexScanNormals_20000Faces(benchmark::State& state) {
    std::string path = gridFile();
    t3DModel model;
    CLoad3DS reader;
    if (!reader.Import3DS(&model, path.c_str())) {
        state.SkipWithError("import failed");
        return;
    }
    const t3DObject& object = model.pObject[0];
    std::vector<tVector3> raw(object.numOfFaces), normals(object.numOfVerts);
    for (auto _ : state) {
        for (int i = 0; i < object.numOfFaces; i++) {
            const int* v = object.pFaces[i].vertIndex;
            raw[i] = Cross(Vector(object.pVerts[v[0]], object.pVerts[v[2]]),
                           Vector(object.pVerts[v[2]], object.pVerts[v[1]]));
        }
        for (int i = 0; i < object.numOfVerts; i++) {
            tVector3 sum = {0, 0, 0};
            int shared = 0;
            for (int j = 0; j < object.numOfFaces; j++) {
                const int* v = object.pFaces[j].vertIndex;
                if (v[0] == i || v[1] == i || v[2] == i) {
                    sum = AddVector(sum, raw[j]);
                    shared++;
                }
            }
            normals[i] = Normalize(DivideVectorByScaler(sum, (float)(-shared)));
        }
        benchmark::DoNotOptimize(normals.data());
    }
    Free3DModel(&model);
}
BENCHMARK(BM_VertexScanNormals_20000Faces)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (!gridFile().empty()) unlink(gridFile().c_str());
    return 0;
}
