#ifndef BV_SCENE_SHADER_H
#define BV_SCENE_SHADER_H

// Planar shadows: triangles projected from the point light onto a level
// ground plane, either into the stencil buffer (the ground list then draws
// the marked area darker) or as textured triangles lying on the ground.

// Where the scene's light 0 stands in the world; shadows and the sun are cast from it.
extern float LightPosition[4];

// Where the light (lx, ly, lz) throws the point (x, y, z) on y = groundy;
// only x and z change. A point as high as the light goes off to infinity.
void shadowpoint(float& x, float y, float& z, float groundy, float lx, float ly, float lz);

// One triangle's shadow on y = groundy, written into the stencil buffer only.
void castShadow(float x1, float y1, float z1, float x2, float y2, float z2, float x3, float y3, float z3,
                float groundy, float lx, float ly, float lz);

// Between these two, castShadow gathers its triangles into one draw instead
// of setting up the stencil pass for each: the stencil ends up the same, and
// so does every other piece of GL state once the batch ends. The callers in
// between may only compute; with the shadow projectors on (they draw lines
// between the triangles) every triangle is still drawn on its own.
void beginShadowBatch();
void endShadowBatch();

// Where the stencil shadows can be. The ground draws each of its layers
// twice, darker where a shadow marked the stencil and as it is elsewhere,
// and a software renderer shades every pixel a pass covers before it tests
// the stencil. So GL's scissor rectangle is kept around the window pixels
// that the shadows cast since the stencil was last cleared can have marked,
// and the darker passes turn the scissor test on: no picture changes, as
// nothing outside the rectangle is marked. Where a triangle reaches behind
// the eye, or outside a batch, the rectangle is the whole window.
// The stencil has just been cleared: nothing is marked yet.
void stencilCleared();

// One triangle projected onto y = groundy and drawn with the given texture
// coordinates; the caller chooses texture, colour and blending.
void castShadowMask(float x1, float y1, float z1, float s1, float t1, float x2, float y2, float z2, float s2,
                    float t2, float x3, float y3, float z3, float s3, float t3, float groundy, float lx, float ly,
                    float lz);

// The sides of the volume a triangle shadows, reaching twice as far from the
// light as the triangle itself. Nothing draws shadow volumes any more.
void castVolumetricShadow(float x1, float y1, float z1, float x2, float y2, float z2, float x3, float y3, float z3,
                          float ignored, float lx, float ly, float lz);

#endif
