#ifndef BV_ASSETS_3DS_H
#define BV_ASSETS_3DS_H

// 3D Studio meshes: CLoad3DS reads the editor part of a ".3DS" file into a
// t3DModel (materials, objects, one smoothed normal per vertex), and s3DS turns
// such a model into textures and one display list that the game replays.

#include <cstdio>
#include <vector>

// Chunk identifiers we act on; every other chunk is skipped whole.
const unsigned short PRIMARY = 0x4D4D;
const unsigned short VERSION = 0x0002;
const unsigned short OBJECTINFO = 0x3D3D;
const unsigned short EDITKEYFRAME = 0xB000;
const unsigned short MATERIAL = 0xAFFF;
const unsigned short MATNAME = 0xA000;
const unsigned short MATDIFFUSE = 0xA020;
const unsigned short MATMAP = 0xA200;
const unsigned short MATMAPFILE = 0xA300;
const unsigned short OBJECT = 0x4000;
const unsigned short OBJECT_MESH = 0x4100;
const unsigned short OBJECT_VERTICES = 0x4110;
const unsigned short OBJECT_FACES = 0x4120;
const unsigned short OBJECT_MATERIAL = 0x4130;
const unsigned short OBJECT_UV = 0x4140;

// Size of the name fields; longer names in a file are cut to 254 characters.
const unsigned int MAX_3DSNAME = 255;
// Textures (and so materials) one drawable model can hold.
const unsigned int MAX_3DSTEXTURES = 99;
// Chunks nest only a few levels in any sane file; deeper nesting is damage.
const unsigned int MAX_3DSDEPTH = 64;

struct tVector3 {
    float x, y, z;
};

struct tVector2 {
    float x, y;
};

struct tChunk {
    unsigned short ID;
    unsigned int length;     // including the 6-byte header
    unsigned int bytesRead;  // of this chunk, header included
};

struct tFace {
    int vertIndex[3];
    int coordIndex[3];  // left at 0: texture coordinates share the vertex index
};

// A face as the file stores it: three vertex indices and a flags word.
struct tIndices {
    unsigned short a, b, c, bVisible;
};

struct tMaterialInfo {
    char strName[MAX_3DSNAME];
    char strFile[MAX_3DSNAME];
    unsigned char color[3];
    int texureId;
    float uTile;
    float vTile;
    float uOffset;
    float vOffset;
};

struct t3DObject {
    int numOfVerts;
    int numOfFaces;
    int numTexVertex;
    int materialID;
    bool bHasTexture;
    char strName[MAX_3DSNAME];
    tVector3* pVerts;
    tVector3* pNormals;
    tVector2* pTexVerts;
    tFace* pFaces;
};

struct t3DModel {
    int numOfObjects = 0;
    int numOfMaterials = 0;
    std::vector<tMaterialInfo> pMaterials;
    std::vector<t3DObject> pObject;
};

// Releases every object's arrays and empties the model.
void Free3DModel(t3DModel* pModel);

class CLoad3DS {
public:
    CLoad3DS();
    CLoad3DS(const CLoad3DS&);
    CLoad3DS& operator=(const CLoad3DS&);
    ~CLoad3DS();

    // False when the file is missing, is not a 3DS file, or is damaged; the
    // model then holds nothing more than it did before the call.
    bool Import3DS(t3DModel* pModel, const char* strFileName);

    void ReadChunk(tChunk* pChunk);
    int GetString(char* pBuffer, unsigned int limit);
    void ProcessNextChunk(t3DModel* pModel, tChunk* pPreviousChunk);
    void ProcessNextObjectChunk(t3DModel* pModel, t3DObject* pObject, tChunk* pPreviousChunk);
    void ProcessNextMaterialChunk(t3DModel* pModel, tChunk* pPreviousChunk);
    void ReadColorChunk(tMaterialInfo* pMaterial, tChunk* pChunk);
    void ReadVertices(t3DObject* pObject, tChunk* pPreviousChunk);
    void ReadVertexIndices(t3DObject* pObject, tChunk* pPreviousChunk);
    void ReadUVCoordinates(t3DObject* pObject, tChunk* pPreviousChunk);
    void ReadObjectMaterial(t3DModel* pModel, t3DObject* pObject, tChunk* pPreviousChunk);
    // Normals of the objects from firstObject on (an import appends to the model).
    void ComputeNormals(t3DModel* pModel, int firstObject = 0);
    void CleanUp();

    // What the last import took from the file: the bytes the chunk counters
    // accounted for and the bytes actually read. Equal for a good file.
    unsigned long m_BytesCounted;
    unsigned long m_BytesRead;

    FILE* m_FilePointer;
    tChunk* m_CurrentChunk;
    tChunk* m_TempChunk;

private:
    unsigned int Read(void* pBuffer, unsigned int size);
    unsigned int Remaining(const tChunk* pChunk) const;
    bool ReadCount(tChunk* pChunk, unsigned int recordSize, unsigned short& count);
    bool ReadHeader(tChunk* pChunk, const tChunk* pParent);
    void ReadInto(tChunk* pChunk, void* pBuffer, unsigned int size);
    void ReadName(tChunk* pChunk, char* pName);
    void Skip(tChunk* pChunk);
    bool Enter();
    // handle(chunk) reads all of one sub-chunk and returns true, or returns
    // false untouched to have it skipped.
    template <typename Handle>
    void WalkChunks(tChunk* pParent, Handle handle);
    bool ValidFaces(const t3DModel* pModel, int firstObject) const;

    bool m_Failed;
    unsigned int m_Depth;
};

// The vector helpers of the normal computation, by value like the game's
// other small maths. Mag works in double precision.
tVector3 Vector(tVector3 vPoint1, tVector3 vPoint2);
tVector3 AddVector(tVector3 vVector1, tVector3 vVector2);
tVector3 DivideVectorByScaler(tVector3 vVector1, float Scaler);
tVector3 Cross(tVector3 vVector1, tVector3 vVector2);
float Mag(tVector3 vNormal);
tVector3 Normalize(tVector3 vNormal);

// A drawable model: its mesh, its textures (entry i for material i) and one
// display list. Global records start zeroed; load once, free once.
// The steps s3DS::castshadow takes a model through, each a turn about one
// axis (the first two also mirror one), or none.
const unsigned int STEP_PITCH = 0, STEP_HEADING = 1, STEP_ROLL = 2, STEP_NONE = 3;

struct s3DS {
    unsigned int Texture[MAX_3DSTEXTURES];
    CLoad3DS g_Load3ds;
    t3DModel g_3DModel;
    unsigned int LIST;

    // texturepath is the prefix of the texture files ("Data/Textures/"), or
    // "NO_LOAD" for a model that borrows another model's textures.
    void load(const char* modelpath, const char* texturepath);
    void draw(bool bindcolors, bool bindtextures, s3DS* texowner);
    void initlist(bool bindcolors, bool bindtextures);
    void initlistExtTextures(bool bindcolors, bool bindtextures, s3DS* texowner);
    void drawlist();
    void free();

    // The model's shadow on y = groundy from the light (lx, ly, lz): each
    // vertex goes through the steps first, second and third (0 about x by ax,
    // 1 about the vertical by ay, 2 about z by az, 3 none), then moves by
    // (x, y, z). Steps 0 and 1 also mirror one axis: a model turned by a for
    // drawing casts right with step 1 by a + 180. castshadow marks the
    // stencil; castshadowmask draws the shadow with the model's own texture
    // coordinates.
    void castshadow(float groundy, float lx, float ly, float lz, float x, float y, float z, float ax, float ay,
                    float az, unsigned int first, unsigned int second, unsigned int third);
    void castshadowmask(float groundy, float lx, float ly, float lz, float x, float y, float z, float ax, float ay,
                        float az, unsigned int first, unsigned int second, unsigned int third);
};

// Where castshadow puts one model vertex (p, q, r as stored: r is the height)
// in the world, as (x, y, z).
tVector3 shadowplace(tVector3 v, float x, float y, float z, float ax, float ay, float az, unsigned int first,
                     unsigned int second, unsigned int third);

// shadowplace for every vertex of a model, with the sines and cosines of the
// turns taken once instead of at each vertex; the places are the same.
struct sShadowPlacement {
    sShadowPlacement(float x, float y, float z, float ax, float ay, float az, unsigned int first,
                     unsigned int second, unsigned int third);
    tVector3 operator()(tVector3 v) const;

    float x, y, z;
    unsigned int steps[3];
    float c[3], s[3];  // of the turn about x, the vertical and z
};

#endif
