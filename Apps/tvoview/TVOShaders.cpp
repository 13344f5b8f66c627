#include "TVOShaders.h"

#include <vector>

namespace
{
const char* const kSceneVertex = R"(
uniform mat4 uViewProj;
uniform mat4 uWorld;
uniform mat4 uUnpack;
uniform bool uSkinned;
uniform int uBonesPerVertex;
uniform mat4 uBones[PALETTE];
attribute vec4 aPosition;
attribute vec3 aNormal;
attribute vec4 aUV;
attribute vec4 aColour;
attribute vec4 aBoneIndex;
attribute vec4 aBoneWeight;
varying vec3 vWorldPos;
varying vec3 vNormal;
varying vec2 vUV;
varying vec4 vColour;
mat3 Linear(mat4 m)
{
    return mat3(m[0].xyz, m[1].xyz, m[2].xyz);
}
void main()
{
    vec4 local = uUnpack * vec4(aPosition.xyz, 1.0);
    vec4 world = uWorld * local;
    vec3 normal = Linear(uWorld) * aNormal;
    if (uSkinned)
    {
        world = vec4(0.0);
        normal = vec3(0.0);
        for (int i = 0; i < 4; ++i)
        {
            if (i >= uBonesPerVertex)
                break;
            float weight = aBoneWeight[i];
            if (weight > 0.0)
            {
                mat4 bone = uBones[int(aBoneIndex[i] + 0.5)];
                world += weight * (bone * local);
                normal += weight * (Linear(bone) * aNormal);
            }
        }
        world /= max(world.w, 1e-6);
    }
    vWorldPos = world.xyz;
    vNormal = normal;
    vUV = aUV.xy;
    vColour = aColour;
    gl_Position = uViewProj * vec4(world.xyz, 1.0);
}
)";

const char* const kSceneFragment = R"(
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
#else
precision mediump float;
#endif
uniform vec3 uEye;
uniform vec3 uAmbient;
uniform vec3 uMatAmbient;
uniform vec3 uMatDiffuse;
uniform vec3 uMatSpecular;
uniform float uShininess;
uniform float uOpacity;
uniform sampler2D uTexture;
uniform bool uTextured;
uniform bool uHasNormals;
uniform vec4 uTint;
uniform int uLightCount;
uniform int uLightType[MAX_LIGHTS];
uniform vec3 uLightPos[MAX_LIGHTS];
uniform vec3 uLightDir[MAX_LIGHTS];
uniform vec3 uLightColour[MAX_LIGHTS];
uniform vec3 uLightAtten[MAX_LIGHTS];
uniform vec2 uLightSpot[MAX_LIGHTS];
varying vec3 vWorldPos;
varying vec3 vNormal;
varying vec2 vUV;
varying vec4 vColour;
void main()
{
    vec3 toEye = normalize(uEye - vWorldPos);
    vec3 n = uHasNormals ? normalize(vNormal) : toEye;
    if (dot(n, toEye) < 0.0)
        n = -n;
    vec4 albedo = vec4(uMatDiffuse, uOpacity) * vColour;
    if (uTextured)
        albedo *= texture2D(uTexture, vUV);
    albedo.rgb = mix(albedo.rgb, uTint.rgb, uTint.a);
    vec3 colour = uAmbient * uMatAmbient * albedo.rgb;
    for (int i = 0; i < MAX_LIGHTS; ++i)
    {
        if (i >= uLightCount)
            break;
        vec3 l;
        float strength = 1.0;
        if (uLightType[i] == 1)
            l = -uLightDir[i];
        else
        {
            vec3 d = uLightPos[i] - vWorldPos;
            float dist = length(d);
            l = d / max(dist, 1e-6);
            vec3 a = uLightAtten[i];
            strength = 1.0 / max(a.x + a.y * dist + a.z * dist * dist, 1e-3);
            if (uLightType[i] == 2)
            {
                float c = dot(-l, normalize(uLightDir[i]));
                strength *= c < uLightSpot[i].x ? 0.0 : pow(max(c, 0.0), uLightSpot[i].y);
            }
        }
        l = normalize(l);
        float diffuse = max(dot(n, l), 0.0);
        float specular = diffuse > 0.0 ? pow(max(dot(n, normalize(l + toEye)), 0.0), max(uShininess, 1.0)) : 0.0;
        colour += strength * uLightColour[i] * (diffuse * albedo.rgb + specular * uMatSpecular);
    }
    gl_FragColor = vec4(colour, albedo.a);
}
)";

const char* const kLineVertex = R"(
uniform mat4 uViewProj;
attribute vec4 aPosition;
void main()
{
    gl_Position = uViewProj * vec4(aPosition.xyz, 1.0);
}
)";

const char* const kLineFragment = R"(
precision mediump float;
uniform vec4 uColour;
void main()
{
    gl_FragColor = uColour;
}
)";

GLuint Compile(GLenum kind, const std::string& source, std::string& error)
{
    const GLuint shader = glCreateShader(kind);
    const char* text = source.c_str();
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    GLint ok = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
    if (ok)
        return shader;
    GLint length = 0;
    glGetShaderiv(shader, GL_INFO_LOG_LENGTH, &length);
    std::vector<char> log(static_cast<size_t>(length > 0 ? length : 1) + 1, 0);
    glGetShaderInfoLog(shader, length, nullptr, log.data());
    error = std::string("shader compilation failed: ") + log.data();
    glDeleteShader(shader);
    return 0;
}

GLuint Link(const std::string& vertex, const std::string& fragment, std::string& error)
{
    const GLuint vs = Compile(GL_VERTEX_SHADER, vertex, error);
    const GLuint fs = vs ? Compile(GL_FRAGMENT_SHADER, fragment, error) : 0;
    if (!fs)
    {
        glDeleteShader(vs);
        return 0;
    }
    const GLuint program = glCreateProgram();
    glAttachShader(program, vs);
    glAttachShader(program, fs);
    const char* names[eAttribCount] = {"aPosition", "aNormal", "aUV", "aColour", "aBoneIndex", "aBoneWeight"};
    for (GLuint a = 0; a < eAttribCount; ++a)
        glBindAttribLocation(program, a, names[a]);
    glLinkProgram(program);
    glDeleteShader(vs);
    glDeleteShader(fs);
    GLint ok = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &ok);
    if (ok)
        return program;
    char log[1024] = "";
    glGetProgramInfoLog(program, sizeof log, nullptr, log);
    error = std::string("shader linking failed: ") + log;
    glDeleteProgram(program);
    return 0;
}
} // namespace

GLuint TVOBuildSceneProgram(int paletteSize, std::string& error)
{
    const std::string defines = "#define PALETTE " + std::to_string(paletteSize > 0 ? paletteSize : 1) +
                                "\n#define MAX_LIGHTS " + std::to_string(kTVOMaxLights) + "\n";
    return Link(defines + kSceneVertex, defines + kSceneFragment, error);
}

GLuint TVOBuildLineProgram(std::string& error)
{
    return Link(kLineVertex, kLineFragment, error);
}
