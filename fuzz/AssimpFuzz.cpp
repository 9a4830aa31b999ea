// Makes up scenes of assimp, with indices out of range and non-finite numbers, and reads them.
#include "CheckModel.h"
#include "FuzzInput.h"
#include "provider/assimp/AssimpModel.h"

#include <assimp/scene.h>

namespace {

constexpr uint32_t MostMeshes = 4;
constexpr uint32_t MostMaterials = 4;
constexpr uint32_t MostVertices = 40;
constexpr uint32_t MostNodes = 600; // deeper than a model may be

float Number(FuzzInput& input) {
    // Half of the numbers are small, so that polygons meet.
    return input.Below(2) == 0 ? static_cast<float>(static_cast<int8_t>(input.Take<uint8_t>())) / 16
                               : input.Take<float>();
}

aiVector3D Vector(FuzzInput& input) {
    const float x = Number(input);
    const float y = Number(input);
    return {x, y, Number(input)};
}

aiVector3D* Vectors(FuzzInput& input, uint32_t count) {
    auto* vectors = new aiVector3D[count];
    for (uint32_t i = 0; i < count; ++i) {
        vectors[i] = Vector(input);
    }
    return vectors;
}

aiString Text(FuzzInput& input) {
    const char* const texts[] = {"", "p.png", "*0", "*9", "no.png", "a%20b", "\xFF\xFE", "../p.png"};
    return aiString(texts[input.Below(std::size(texts))]);
}

aiMesh* MakeMesh(FuzzInput& input) {
    auto* mesh = new aiMesh;
    mesh->mName = Text(input);
    mesh->mMaterialIndex = input.Below(MostMaterials + 1);
    mesh->mNumVertices = input.Below(MostVertices);
    const uint32_t parts = input.Take<uint8_t>();
    mesh->mVertices = (parts & 1) != 0 ? nullptr : Vectors(input, mesh->mNumVertices);
    mesh->mNormals = (parts & 2) != 0 ? Vectors(input, mesh->mNumVertices) : nullptr;
    mesh->mTextureCoords[0] = (parts & 4) != 0 ? Vectors(input, mesh->mNumVertices) : nullptr;
    mesh->mTextureCoords[3] = (parts & 8) != 0 ? Vectors(input, mesh->mNumVertices) : nullptr;
    if (mesh->mVertices == nullptr) {
        mesh->mNumVertices = 0;
    }
    mesh->mNumFaces = input.Below(MostVertices);
    mesh->mFaces = new aiFace[mesh->mNumFaces];
    for (uint32_t i = 0; i < mesh->mNumFaces; ++i) {
        aiFace& face = mesh->mFaces[i];
        face.mNumIndices = input.Below(10);
        face.mIndices = new unsigned[face.mNumIndices];
        for (uint32_t corner = 0; corner < face.mNumIndices; ++corner) {
            face.mIndices[corner] = input.Below(mesh->mNumVertices + 1);
        }
    }
    return mesh;
}

aiMaterial* MakeMaterial(FuzzInput& input) {
    auto* material = new aiMaterial;
    aiString text = Text(input);
    material->AddProperty(&text, AI_MATKEY_NAME);
    const aiColor4D color(Number(input), Number(input), Number(input), Number(input));
    material->AddProperty(&color, 1, AI_MATKEY_COLOR_DIFFUSE);
    const float opacity = Number(input);
    material->AddProperty(&opacity, 1, AI_MATKEY_OPACITY);
    text = Text(input);
    material->AddProperty(&text, AI_MATKEY_TEXTURE_DIFFUSE(0));
    const int set = input.Take<uint8_t>() - 2; // also impossible sets
    material->AddProperty(&set, 1, AI_MATKEY_UVWSRC_DIFFUSE(0));
    return material;
}

aiTexture* MakeTexture(FuzzInput& input) {
    auto* texture = new aiTexture;
    texture->mWidth = input.Below(40);
    texture->mHeight = input.Below(9);
    const size_t texels = texture->mHeight != 0
                              ? size_t{texture->mWidth} * texture->mHeight
                              : (texture->mWidth + sizeof(aiTexel) - 1) / sizeof(aiTexel);
    texture->pcData = new aiTexel[texels];
    for (size_t i = 0; i < texels; ++i) {
        texture->pcData[i] = input.Take<aiTexel>();
    }
    return texture;
}

// Grows the array of children one by one, so that its size is exact.
void AddChild(aiNode& parent, aiNode* child) {
    auto** children = new aiNode*[parent.mNumChildren + 1];
    std::copy_n(parent.mChildren, parent.mNumChildren, children);
    delete[] parent.mChildren;
    children[parent.mNumChildren++] = child;
    parent.mChildren = children;
    child->mParent = &parent;
}

aiNode* MakeNode(FuzzInput& input, uint32_t meshes) {
    auto* node = new aiNode;
    node->mName = Text(input);
    if (input.Below(2) == 1) {
        for (unsigned row = 0; row < 4; ++row) {
            for (unsigned column = 0; column < 4; ++column) {
                node->mTransformation[row][column] = Number(input);
            }
        }
    }
    node->mNumMeshes = input.Below(3);
    node->mMeshes = new unsigned[node->mNumMeshes];
    for (uint32_t i = 0; i < node->mNumMeshes; ++i) {
        node->mMeshes[i] = input.Below(meshes + 1);
    }
    return node;
}

template <class Element, class Make>
Element** MakeArray(FuzzInput& input, uint32_t most, unsigned& count, Make make) {
    count = input.Below(most + 1);
    auto** array = new Element*[count];
    for (uint32_t i = 0; i < count; ++i) {
        array[i] = make(input);
    }
    return array;
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input = {{data, size}};
    aiScene scene;
    scene.mMeshes = MakeArray<aiMesh>(input, MostMeshes, scene.mNumMeshes, MakeMesh);
    scene.mMaterials = MakeArray<aiMaterial>(input, MostMaterials, scene.mNumMaterials, MakeMaterial);
    scene.mTextures = MakeArray<aiTexture>(input, 2, scene.mNumTextures, MakeTexture);
    if (input.Below(2) == 1) {
        scene.mMetaData = aiMetadata::Alloc(2);
        scene.mMetaData->Set(0, "SourceAsset_Format", aiString("Stereolithography (STL) Importer"));
        scene.mMetaData->Set(1, "UpAxis", static_cast<int32_t>(input.Below(4)));
    }
    scene.mRootNode = MakeNode(input, scene.mNumMeshes);
    std::vector<aiNode*> nodes = {scene.mRootNode};
    while (!input.Bytes.empty() && nodes.size() < MostNodes) {
        const uint32_t back = input.Below(4);
        aiNode& parent = *nodes[nodes.size() - 1 - std::min<size_t>(back, nodes.size() - 1)];
        nodes.push_back(MakeNode(input, scene.mNumMeshes));
        AddChild(parent, nodes.back());
    }
    Model model;
    std::string error;
    if (ReadAssimpScene(scene, PictureFolder(), model, error)) {
        CheckModel(std::move(model));
    } else {
        Expect(!error.empty());
    }
    return 0;
}
