// Reading .3DS meshes and turning them into textures and one display list.

#include "assets/3ds.h"

#include <GL/gl.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <string>

#include "assets/texture.h"
#include "shell/angles.h"
#include "scene/shader.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"

// Vertices, texture coordinates and faces are read straight into our records.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the 3DS reader assumes a little-endian machine");
static_assert(sizeof(tVector3) == 12 && sizeof(tVector2) == 8 && sizeof(tIndices) == 8,
              "3DS records must match the file's layout");

// ---------------------------------------------------------------------------
// Vector helpers

tVector3 Vector(tVector3 vPoint1, tVector3 vPoint2) {
    return {vPoint1.x - vPoint2.x, vPoint1.y - vPoint2.y, vPoint1.z - vPoint2.z};
}

tVector3 AddVector(tVector3 vVector1, tVector3 vVector2) {
    return {vVector2.x + vVector1.x, vVector2.y + vVector1.y, vVector2.z + vVector1.z};
}

tVector3 DivideVectorByScaler(tVector3 vVector1, float Scaler) {
    return {vVector1.x / Scaler, vVector1.y / Scaler, vVector1.z / Scaler};
}

tVector3 Cross(tVector3 vVector1, tVector3 vVector2) {
    return {vVector1.y * vVector2.z - vVector1.z * vVector2.y, vVector1.z * vVector2.x - vVector1.x * vVector2.z,
            vVector1.x * vVector2.y - vVector1.y * vVector2.x};
}

float Mag(tVector3 vNormal) {
    return (float)sqrt((double)vNormal.x * vNormal.x + (double)vNormal.y * vNormal.y +
                       (double)vNormal.z * vNormal.z);
}

tVector3 Normalize(tVector3 vNormal) {
    float magnitude = Mag(vNormal);
    return {vNormal.x / magnitude, vNormal.y / magnitude, vNormal.z / magnitude};
}

// ---------------------------------------------------------------------------
// The reader

static void freeObject(t3DObject* object) {
    delete[] object->pVerts;
    delete[] object->pNormals;
    delete[] object->pTexVerts;
    delete[] object->pFaces;
    object->pVerts = object->pNormals = nullptr;
    object->pTexVerts = nullptr;
    object->pFaces = nullptr;
}

void Free3DModel(t3DModel* pModel) {
    for (t3DObject& object : pModel->pObject) freeObject(&object);
    pModel->pObject.clear();
    pModel->pMaterials.clear();
    pModel->numOfObjects = 0;
    pModel->numOfMaterials = 0;
}

CLoad3DS::CLoad3DS()
    : m_BytesCounted(0), m_BytesRead(0), m_FilePointer(nullptr), m_CurrentChunk(new tChunk()),
      m_TempChunk(new tChunk()), m_Failed(false), m_Depth(0) {}

// A reader is tied to its own file and chunk records; a copy starts afresh.
CLoad3DS::CLoad3DS(const CLoad3DS&) : CLoad3DS() {}

CLoad3DS& CLoad3DS::operator=(const CLoad3DS&) {
    return *this;
}

CLoad3DS::~CLoad3DS() {
    CleanUp();
}

void CLoad3DS::CleanUp() {
    if (m_FilePointer) fclose(m_FilePointer);
    m_FilePointer = nullptr;
    delete m_CurrentChunk;
    delete m_TempChunk;
    m_CurrentChunk = m_TempChunk = nullptr;
}

unsigned int CLoad3DS::Read(void* pBuffer, unsigned int size) {
    if (m_Failed || size == 0) return 0;
    unsigned int got = (unsigned int)fread(pBuffer, 1, size, m_FilePointer);
    m_BytesRead += got;
    // The file ended inside a chunk: nothing after this point can be trusted.
    if (got != size) m_Failed = true;
    return got;
}

unsigned int CLoad3DS::Remaining(const tChunk* pChunk) const {
    return pChunk->length > pChunk->bytesRead ? pChunk->length - pChunk->bytesRead : 0;
}

void CLoad3DS::ReadChunk(tChunk* pChunk) {
    pChunk->ID = 0;
    pChunk->length = 0;
    pChunk->bytesRead = Read(&pChunk->ID, 2);
    pChunk->bytesRead += Read(&pChunk->length, 4);
}

// A chunk header inside pParent; a chunk that claims to reach past its parent
// (or to be shorter than its own header) is damage, and so is the end of file.
bool CLoad3DS::ReadHeader(tChunk* pChunk, const tChunk* pParent) {
    unsigned int room = Remaining(pParent);
    if (room < 6) {
        m_Failed = true;
        return false;
    }
    ReadChunk(pChunk);
    if (m_Failed || pChunk->length < 6 || pChunk->length > room) {
        m_Failed = true;
        return false;
    }
    return true;
}

// Reads up to size bytes of the chunk's rest into pBuffer and skips whatever
// is left, so that the count always reaches the chunk's end.
void CLoad3DS::ReadInto(tChunk* pChunk, void* pBuffer, unsigned int size) {
    unsigned int n = Remaining(pChunk);
    if (n > size) n = size;
    pChunk->bytesRead += Read(pBuffer, n);
    Skip(pChunk);
}

// Names and file names fill the rest of their chunk, terminating zero included;
// whatever does not fit the field is skipped.
void CLoad3DS::ReadName(tChunk* pChunk, char* pName) {
    unsigned int n = Remaining(pChunk);
    if (n > MAX_3DSNAME - 1) n = MAX_3DSNAME - 1;
    unsigned int got = Read(pName, n);
    pName[got] = 0;
    pChunk->bytesRead += got;
    Skip(pChunk);
}

// Bounded pieces, so that a chunk of any length is skipped and counted the same.
void CLoad3DS::Skip(tChunk* pChunk) {
    char scratch[4096];
    while (!m_Failed && Remaining(pChunk) > 0) {
        unsigned int n = Remaining(pChunk);
        if (n > sizeof scratch) n = sizeof scratch;
        pChunk->bytesRead += Read(scratch, n);
    }
}

// A zero-terminated string of at most limit bytes (the rest of its chunk);
// stores what fits the name field and returns the bytes read.
int CLoad3DS::GetString(char* pBuffer, unsigned int limit) {
    unsigned int count = 0, stored = 0;
    while (!m_Failed) {
        if (count >= limit) {
            m_Failed = true;  // no terminating zero before the chunk's end
            break;
        }
        int c = fgetc(m_FilePointer);
        if (c == EOF) {
            m_Failed = true;
            break;
        }
        m_BytesRead++;
        count++;
        if (c == 0) break;
        if (stored < MAX_3DSNAME - 1) pBuffer[stored++] = (char)c;
    }
    pBuffer[stored] = 0;
    return (int)count;
}

bool CLoad3DS::Enter() {
    if (++m_Depth > MAX_3DSDEPTH) m_Failed = true;
    return !m_Failed;
}

bool CLoad3DS::Import3DS(t3DModel* pModel, const char* strFileName) {
    m_BytesCounted = m_BytesRead = 0;
    m_Failed = false;
    m_Depth = 0;
    if (!m_CurrentChunk) m_CurrentChunk = new tChunk();
    if (!m_TempChunk) m_TempChunk = new tChunk();

    m_FilePointer = fopen(strFileName, "rb");
    if (!m_FilePointer) {
        CleanUp();
        return false;
    }

    ReadChunk(m_CurrentChunk);
    if (m_Failed || m_CurrentChunk->ID != PRIMARY || m_CurrentChunk->length < 6) {
        CleanUp();
        return false;
    }

    int firstObject = (int)pModel->pObject.size();
    int firstMaterial = (int)pModel->pMaterials.size();
    int numOfObjects = pModel->numOfObjects;
    int numOfMaterials = pModel->numOfMaterials;

    ProcessNextChunk(pModel, m_CurrentChunk);
    m_BytesCounted = m_CurrentChunk->bytesRead;

    bool ok = !m_Failed && ValidFaces(pModel, firstObject);
    if (ok) {
        ComputeNormals(pModel, firstObject);
    } else {
        // A damaged file adds nothing: half an object is worse than none.
        for (size_t i = firstObject; i < pModel->pObject.size(); i++) freeObject(&pModel->pObject[i]);
        pModel->pObject.resize(firstObject);
        pModel->pMaterials.resize(firstMaterial);
        pModel->numOfObjects = numOfObjects;
        pModel->numOfMaterials = numOfMaterials;
    }
    CleanUp();
    return ok;
}

bool CLoad3DS::ValidFaces(const t3DModel* pModel, int firstObject) const {
    for (size_t i = firstObject; i < pModel->pObject.size(); i++) {
        const t3DObject& object = pModel->pObject[i];
        for (int f = 0; f < object.numOfFaces; f++)
            for (int k = 0; k < 3; k++)
                if (object.pFaces[f].vertIndex[k] < 0 || object.pFaces[f].vertIndex[k] >= object.numOfVerts)
                    return false;
    }
    return true;
}

// The skeleton every chunk walker shares: the sub-chunks of pParent one
// header at a time, each checked against its parent before anything of it is
// read, handed whole to handle, and counted into the parent. A chunk handle
// does not claim is skipped. Nesting deeper than MAX_3DSDEPTH is damage.
template <typename Handle>
void CLoad3DS::WalkChunks(tChunk* pParent, Handle handle) {
    tChunk current = {};
    m_CurrentChunk = &current;
    if (Enter()) {
        while (!m_Failed && pParent->bytesRead < pParent->length) {
            if (!ReadHeader(&current, pParent)) break;
            if (!handle(&current)) Skip(&current);
            pParent->bytesRead += current.bytesRead;
        }
    }
    m_Depth--;
    m_CurrentChunk = pParent;
}

void CLoad3DS::ProcessNextChunk(t3DModel* pModel, tChunk* pPreviousChunk) {
    WalkChunks(pPreviousChunk, [&](tChunk* current) {
        switch (current->ID) {
        case OBJECTINFO:
            // The mesh version comes first and means nothing to us.
            if (Remaining(current) > 0 && ReadHeader(m_TempChunk, current)) {
                Skip(m_TempChunk);
                current->bytesRead += m_TempChunk->bytesRead;
            }
            ProcessNextChunk(pModel, current);
            return true;
        case MATERIAL:
            pModel->numOfMaterials++;
            pModel->pMaterials.push_back(tMaterialInfo());
            ProcessNextMaterialChunk(pModel, current);
            return true;
        case OBJECT: {
            pModel->numOfObjects++;
            pModel->pObject.push_back(t3DObject());
            t3DObject* object = &pModel->pObject.back();
            current->bytesRead += GetString(object->strName, Remaining(current));
            ProcessNextObjectChunk(pModel, object, current);
            return true;
        }
        default:  // VERSION among them
            return false;
        }
    });
}

void CLoad3DS::ProcessNextMaterialChunk(t3DModel* pModel, tChunk* pPreviousChunk) {
    tMaterialInfo* material = &pModel->pMaterials.back();
    WalkChunks(pPreviousChunk, [&](tChunk* current) {
        switch (current->ID) {
        case MATNAME:
            ReadName(current, material->strName);
            return true;
        case MATDIFFUSE:
            ReadColorChunk(material, current);
            return true;
        case MATMAP:
            ProcessNextMaterialChunk(pModel, current);
            return true;
        case MATMAPFILE:
            ReadName(current, material->strFile);
            return true;
        default:
            return false;
        }
    });
}

void CLoad3DS::ProcessNextObjectChunk(t3DModel* pModel, t3DObject* pObject, tChunk* pPreviousChunk) {
    WalkChunks(pPreviousChunk, [&](tChunk* current) {
        switch (current->ID) {
        case OBJECT_MESH:
            ProcessNextObjectChunk(pModel, pObject, current);
            return true;
        case OBJECT_VERTICES:
            ReadVertices(pObject, current);
            return true;
        case OBJECT_FACES:
            ReadVertexIndices(pObject, current);
            return true;
        case OBJECT_MATERIAL:
            ReadObjectMaterial(pModel, pObject, current);
            return true;
        case OBJECT_UV:
            ReadUVCoordinates(pObject, current);
            return true;
        default:
            return false;
        }
    });
}

void CLoad3DS::ReadColorChunk(tMaterialInfo* pMaterial, tChunk* pChunk) {
    if (Remaining(pChunk) == 0) return;
    if (!ReadHeader(m_TempChunk, pChunk)) return;
    ReadInto(m_TempChunk, pMaterial->color, sizeof pMaterial->color);
    pChunk->bytesRead += m_TempChunk->bytesRead;
}

// A list's count from the file, believed only as far as its chunk really
// holds that many records of recordSize; anything less fails the file.
bool CLoad3DS::ReadCount(tChunk* pChunk, unsigned int recordSize, unsigned short& count) {
    count = 0;
    if (Remaining(pChunk) < 2) {
        m_Failed = true;
        return false;
    }
    pChunk->bytesRead += Read(&count, 2);
    if (m_Failed || (unsigned long)count * recordSize > Remaining(pChunk)) {
        m_Failed = true;
        return false;
    }
    return true;
}

void CLoad3DS::ReadVertices(t3DObject* pObject, tChunk* pPreviousChunk) {
    unsigned short count;
    if (!ReadCount(pPreviousChunk, sizeof(tVector3), count)) return;
    delete[] pObject->pVerts;
    pObject->numOfVerts = count;
    pObject->pVerts = count ? new tVector3[count]() : nullptr;
    ReadInto(pPreviousChunk, pObject->pVerts, count * (unsigned int)sizeof(tVector3));
}

void CLoad3DS::ReadVertexIndices(t3DObject* pObject, tChunk* pPreviousChunk) {
    unsigned short count;
    if (!ReadCount(pPreviousChunk, sizeof(tIndices), count)) return;
    std::vector<tIndices> indices(count);
    pPreviousChunk->bytesRead += Read(indices.data(), count * (unsigned int)sizeof(tIndices));
    if (m_Failed) return;
    delete[] pObject->pFaces;
    pObject->numOfFaces = count;
    pObject->pFaces = count ? new tFace[count]() : nullptr;
    for (unsigned int i = 0; i < count; i++) {
        pObject->pFaces[i].vertIndex[0] = indices[i].a;
        pObject->pFaces[i].vertIndex[1] = indices[i].b;
        pObject->pFaces[i].vertIndex[2] = indices[i].c;
    }
    // The face chunk's own sub-chunks (material groups, smoothing groups) stay
    // in the stream and reach the object walker as if they were siblings.
}

void CLoad3DS::ReadUVCoordinates(t3DObject* pObject, tChunk* pPreviousChunk) {
    unsigned short count;
    if (!ReadCount(pPreviousChunk, sizeof(tVector2), count)) return;
    delete[] pObject->pTexVerts;
    pObject->numTexVertex = count;
    pObject->pTexVerts = count ? new tVector2[count] : nullptr;
    ReadInto(pPreviousChunk, pObject->pTexVerts, count * (unsigned int)sizeof(tVector2));
}

void CLoad3DS::ReadObjectMaterial(t3DModel* pModel, t3DObject* pObject, tChunk* pPreviousChunk) {
    char strMaterial[MAX_3DSNAME] = {0};
    pPreviousChunk->bytesRead += GetString(strMaterial, Remaining(pPreviousChunk));
    if (m_Failed) return;
    for (int i = 0; i < pModel->numOfMaterials; i++) {
        if (strcmp(strMaterial, pModel->pMaterials[i].strName) == 0) {
            pObject->materialID = i;
            if (pModel->pMaterials[i].strFile[0]) pObject->bHasTexture = true;
            break;
        }
    }
    // The group's face list: faces are not split by material.
    Skip(pPreviousChunk);
}

// Each vertex normal is the unit vector along the sum of the raw normals of the
// faces that use it. The sums are gathered face by face in one pass; every
// vertex still receives its faces in face order, so the floats come out exactly
// as a scan of all faces for every vertex would give them.
void CLoad3DS::ComputeNormals(t3DModel* pModel, int firstObject) {
    for (size_t o = firstObject; o < pModel->pObject.size(); o++) {
        t3DObject* object = &pModel->pObject[o];
        int verts = object->numOfVerts;
        delete[] object->pNormals;
        object->pNormals = verts > 0 ? new tVector3[verts] : nullptr;
        if (verts <= 0) continue;

        std::vector<tVector3> sum(verts, tVector3{0, 0, 0});
        std::vector<int> shared(verts, 0);
        for (int f = 0; f < object->numOfFaces; f++) {
            const int* index = object->pFaces[f].vertIndex;
            tVector3 vPoly0 = object->pVerts[index[0]];
            tVector3 vPoly1 = object->pVerts[index[1]];
            tVector3 vPoly2 = object->pVerts[index[2]];
            tVector3 vVector1 = Vector(vPoly0, vPoly2);
            tVector3 vVector2 = Vector(vPoly2, vPoly1);
            tVector3 vNormal = Cross(vVector1, vVector2);
            // A face that lists a vertex twice counts once for it.
            for (int k = 0; k < 3; k++) {
                int v = index[k];
                if ((k > 0 && v == index[0]) || (k > 1 && v == index[1])) continue;
                sum[v] = AddVector(sum[v], vNormal);
                shared[v]++;
            }
        }
        // The raw normal points the wrong way; dividing by the negated count turns it back.
        for (int i = 0; i < verts; i++)
            object->pNormals[i] = Normalize(DivideVectorByScaler(sum[i], (float)(-shared[i])));
    }
}

// ---------------------------------------------------------------------------
// Drawable models

void s3DS::load(const char* modelpath, const char* texturepath) {
    std::string path = std::string(config.PATH) + modelpath;
    std::string text = std::string("Loading model f : ") + modelpath;
    config.disploaded(path.c_str());
    bool textures = texturepath && strcmp(texturepath, "NO_LOAD") != 0;

    if (!g_Load3ds.Import3DS(&g_3DModel, path.c_str())) {
        printf("NOT FOUND: %s\n", path.c_str());
        blackbox.task(text.c_str(), false);
        return;
    }
    // Our texture table has room for so many materials and no more.
    if (g_3DModel.numOfMaterials > (int)MAX_3DSTEXTURES) {
        Free3DModel(&g_3DModel);
        text += " (more than 99 materials)";
        blackbox.task(text.c_str(), false);
        return;
    }
    blackbox.task(text.c_str(), true);

    for (int i = 0; i < g_3DModel.numOfMaterials; i++) {
        tMaterialInfo& material = g_3DModel.pMaterials[i];
        if (textures && material.strFile[0]) {
            std::string file = std::string(texturepath) + material.strFile;
            floadTextureTGA(file.c_str(), &Texture[i]);
        }
        material.texureId = i;
    }
}

void s3DS::draw(bool bindcolors, bool bindtextures, s3DS* texowner) {
    if (!texowner) texowner = this;
    glPushMatrix();
    // Our files are z-up; the game is y-up.
    glRotatef(-90, 1, 0, 0);
    for (int o = 0; o < g_3DModel.numOfObjects; o++) {
        const t3DObject& object = g_3DModel.pObject[o];
        if (object.bHasTexture) {
            if (bindcolors) glColor3ub(255, 255, 255);
            if (bindtextures) {
                glEnable(GL_TEXTURE_2D);
                glBindTexture(GL_TEXTURE_2D, texowner->Texture[object.materialID]);
            }
        } else if (bindtextures) {
            glDisable(GL_TEXTURE_2D);
        }
        const unsigned char* color = nullptr;
        if (object.materialID >= 0 && object.materialID < g_3DModel.numOfMaterials)
            color = g_3DModel.pMaterials[object.materialID].color;

        glBegin(GL_TRIANGLES);
        for (int f = 0; f < object.numOfFaces; f++) {
            for (int k = 0; k < 3; k++) {
                int index = object.pFaces[f].vertIndex[k];
                glNormal3f(object.pNormals[index].x, object.pNormals[index].y, object.pNormals[index].z);
                if (object.bHasTexture) {
                    if (object.pTexVerts && index < object.numTexVertex)
                        glTexCoord2f(object.pTexVerts[index].x, object.pTexVerts[index].y);
                } else if (bindcolors && color) {
                    glColor3ub(color[0], color[1], color[2]);
                }
                glVertex3f(object.pVerts[index].x, object.pVerts[index].y, object.pVerts[index].z);
            }
        }
        glEnd();
    }
    glPopMatrix();
    if (bindtextures) glDisable(GL_TEXTURE_2D);
}

void s3DS::initlist(bool bindcolors, bool bindtextures) {
    initlistExtTextures(bindcolors, bindtextures, this);
}

void s3DS::initlistExtTextures(bool bindcolors, bool bindtextures, s3DS* texowner) {
    LIST = glGenLists(1);
    glNewList(LIST, GL_COMPILE);
    draw(bindcolors, bindtextures, texowner);
    glEndList();
}

void s3DS::drawlist() {
    glCallList(LIST);
}

// Leaves the record empty, so that a second free or a stray draw does no harm.
void s3DS::free() {
    if (LIST && glIsList(LIST)) glDeleteLists(LIST, 1);
    LIST = 0;
    for (int i = 0; i < g_3DModel.numOfMaterials && i < (int)MAX_3DSTEXTURES; i++) {
        if (Texture[i]) freeTexture(&Texture[i]);
        Texture[i] = 0;
    }
    Free3DModel(&g_3DModel);
}

tVector3 shadowplace(tVector3 v, float x, float y, float z, float ax, float ay, float az, unsigned int first,
                     unsigned int second, unsigned int third) {
    float p = v.x, q = v.y, r = v.z;
    const unsigned int steps[3] = {first, second, third};
    for (unsigned int step : steps) {
        if (step == 0) {
            float c = cosf(ax / KART_DEG_PER_RAD), s = sinf(ax / KART_DEG_PER_RAD);
            float r2 = c * r + s * q;
            q = s * r - c * q;
            r = r2;
        } else if (step == 1) {
            float c = cosf(ay / KART_DEG_PER_RAD), s = sinf(ay / KART_DEG_PER_RAD);
            float p2 = s * q - c * p;
            q = c * q + s * p;
            p = p2;
        } else if (step == 2) {
            float c = cosf(az / KART_DEG_PER_RAD), s = sinf(az / KART_DEG_PER_RAD);
            float p2 = c * p - s * r;
            r = c * r + s * p;
            p = p2;
        }
    }
    return {p + x, r + y, q + z};
}

sShadowPlacement::sShadowPlacement(float x, float y, float z, float ax, float ay, float az, unsigned int first,
                                   unsigned int second, unsigned int third)
    : x(x), y(y), z(z), steps{first, second, third} {
    const float turns[3] = {ax, ay, az};
    for (int i = 0; i < 3; i++) {
        c[i] = cosf(turns[i] / KART_DEG_PER_RAD);
        s[i] = sinf(turns[i] / KART_DEG_PER_RAD);
    }
}

tVector3 sShadowPlacement::operator()(tVector3 v) const {
    float p = v.x, q = v.y, r = v.z;
    for (unsigned int step : steps) {
        if (step == 0) {
            float r2 = c[0] * r + s[0] * q;
            q = s[0] * r - c[0] * q;
            r = r2;
        } else if (step == 1) {
            float p2 = s[1] * q - c[1] * p;
            q = c[1] * q + s[1] * p;
            p = p2;
        } else if (step == 2) {
            float p2 = c[2] * p - s[2] * r;
            r = c[2] * r + s[2] * p;
            p = p2;
        }
    }
    return {p + x, r + y, q + z};
}

void s3DS::castshadow(float groundy, float lx, float ly, float lz, float x, float y, float z, float ax, float ay,
                      float az, unsigned int first, unsigned int second, unsigned int third) {
    const sShadowPlacement place(x, y, z, ax, ay, az, first, second, third);
    for (int o = 0; o < g_3DModel.numOfObjects; o++) {
        const t3DObject& object = g_3DModel.pObject[o];
        for (int f = 0; f < object.numOfFaces; f++) {
            tVector3 w[3];
            for (int k = 0; k < 3; k++) w[k] = place(object.pVerts[object.pFaces[f].vertIndex[k]]);
            ::castShadow(w[0].x, w[0].y, w[0].z, w[1].x, w[1].y, w[1].z, w[2].x, w[2].y, w[2].z, groundy, lx, ly, lz);
        }
    }
}

void s3DS::castshadowmask(float groundy, float lx, float ly, float lz, float x, float y, float z, float ax, float ay,
                          float az, unsigned int first, unsigned int second, unsigned int third) {
    const sShadowPlacement place(x, y, z, ax, ay, az, first, second, third);
    for (int o = 0; o < g_3DModel.numOfObjects; o++) {
        const t3DObject& object = g_3DModel.pObject[o];
        bool textured = object.bHasTexture && object.pTexVerts;
        for (int f = 0; f < object.numOfFaces; f++) {
            tVector3 w[3];
            tVector2 st[3];
            for (int k = 0; k < 3; k++) {
                int index = object.pFaces[f].vertIndex[k];
                w[k] = place(object.pVerts[index]);
                // An object without a picture has no coordinates to give.
                st[k] = textured && index < object.numTexVertex ? object.pTexVerts[index] : tVector2{0, 0};
            }
            ::castShadowMask(w[0].x, w[0].y, w[0].z, st[0].x, st[0].y, w[1].x, w[1].y, w[1].z, st[1].x, st[1].y,
                             w[2].x, w[2].y, w[2].z, st[2].x, st[2].y, groundy, lx, ly, lz);
        }
    }
}
