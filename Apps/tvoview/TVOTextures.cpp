#include "TVOTextures.h"

#include <QFileInfo>
#include <QImage>

namespace
{
int PowerOfTwoBelow(int n)
{
    int p = 1;
    while (p * 2 <= n && p < 4096)
        p *= 2;
    return p;
}

GLuint Upload(const QImage& image, bool nearest)
{
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, image.width(), image.height(), 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 image.constBits());
    glGenerateMipmap(GL_TEXTURE_2D);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, nearest ? GL_NEAREST : GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, nearest ? GL_NEAREST : GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    glBindTexture(GL_TEXTURE_2D, 0);
    return texture;
}
} // namespace

GLuint CTVOTextures::Checker()
{
    if (!m_nChecker)
    {
        QImage image(8, 8, QImage::Format_RGBA8888);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x)
                image.setPixel(x, y, ((x + y) & 1) ? qRgb(255, 0, 255) : qRgb(32, 32, 32));
        m_nChecker = Upload(image, true);
    }
    return m_nChecker;
}

GLuint CTVOTextures::Get(int32_t idx, std::vector<std::string>& warnings)
{
    if (!m_pScene || idx < 0 || static_cast<uint32_t>(idx) >= m_pScene->nNumTexture)
        return 0;
    const auto found = m_loaded.find(idx);
    if (found != m_loaded.end())
        return found->second;
    const char* name = m_pScene->pTexture[idx].pszName ? m_pScene->pTexture[idx].pszName : "";
    QString path = QString::fromUtf8(name);
    if (QFileInfo(path).isRelative())
        path = QString::fromStdString(m_sBaseDir) + "/" + path;
    QImage image(path);
    GLuint texture = 0;
    if (image.isNull())
    {
        warnings.push_back(std::string("texture '") + name + "' cannot be read from " + path.toStdString() +
                           ": drawn as a checker");
        texture = Checker();
    }
    else
    {
        image = image
                    .scaled(PowerOfTwoBelow(image.width()), PowerOfTwoBelow(image.height()),
                            Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                    .convertToFormat(QImage::Format_RGBA8888)
                    .mirrored(false, true);
        texture = Upload(image, false);
    }
    m_loaded[idx] = texture;
    return texture;
}

void CTVOTextures::Release()
{
    for (const auto& t : m_loaded)
        if (t.second != m_nChecker)
            glDeleteTextures(1, &t.second);
    if (m_nChecker)
        glDeleteTextures(1, &m_nChecker);
    m_loaded.clear();
    m_nChecker = 0;
}
